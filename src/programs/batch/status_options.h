// The command line of `kolvex batch status`.
#pragma once

#include <chrono>
#include <string>

#include "tool/command.h"

namespace batch {

struct StatusOptions {
  std::string directory;
  bool isJson = false;
  bool isWatched = false;
  std::chrono::milliseconds pause{2000};  // between two looks
};

// Fills `options` when it parses; they must live as long.
tool::Command statusCommand(StatusOptions& options);

}  // namespace batch
