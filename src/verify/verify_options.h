// The command line of `kolvex verify`.
#pragma once

#include <string>
#include <vector>

#include "tool/command.h"

namespace verify {

struct VerifyOptions {
  std::vector<std::string> files;
  bool isQuiet = false;  // print faults only
};

// Fills `options` when it parses; they must live as long.
tool::Command verifyCommand(VerifyOptions& options);

}  // namespace verify
