// The command line of `kolvex check`.
#pragma once

#include <string>

#include "tool/command.h"

namespace inspect {

struct CheckOptions {
  std::string configuration;
  std::string database;  // empty for none
  bool isJson = false;
};

// Exit statuses of its own.
inline constexpr int kHasRemarks = 3;
inline constexpr int kTakesNothing = 4;

tool::Command checkCommand(CheckOptions& options);

}  // namespace inspect
