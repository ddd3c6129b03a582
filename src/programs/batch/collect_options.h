// The command line of `kolvex batch collect`.
#pragma once

#include <string>
#include <vector>

#include "tool/command.h"

namespace batch {

struct CollectOptions {
  std::string directory;
  std::string form = "csv";
  std::string output;  // empty: standard output
  std::vector<std::string> patterns;
  bool isLong = false;
};

// Fills `options` when it parses; they must live as long.
tool::Command collectCommand(CollectOptions& options);

}  // namespace batch
