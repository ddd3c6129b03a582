// The command line of `kolvex locate`.
#pragma once

#include <string>
#include <vector>

#include "tool/command.h"

namespace inspect {

// Exit status beside those that all commands share.
inline constexpr int kNotLocated = 3;

struct LocateOptions {
  std::string database;
  std::vector<std::string> names;  // of records, with * and ?
  std::string params;
  std::string configuration;
  std::size_t next = 10;
  bool isOverTime = false;
  bool isJson = false;
};

// Fills `options` when it parses; they must live as long.
tool::Command locateCommand(LocateOptions& options);

}  // namespace inspect
