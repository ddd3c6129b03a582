// The command line of `kolvex batch show`.
#pragma once

#include <string>

#include "tool/command.h"

namespace batch {

struct ShowOptions {
  std::string directory;
  std::string input;  // its path or its id
  bool wantsLog = false;
  bool wantsStatus = false;
};

// Fills `options` when it parses; they must live as long.
tool::Command showCommand(ShowOptions& options);

}  // namespace batch
