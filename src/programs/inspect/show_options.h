// The command line of `kolvex show`.
#pragma once

#include <string>
#include <vector>

#include "tool/command.h"

namespace inspect {

struct ShowOptions {
  std::string database;
  std::vector<std::string> steps;
  std::vector<std::string> fields;
  std::vector<std::string> sets;
  std::string records;  // a configuration
  bool isConfiguration = false;
  bool isJson = false;
};

tool::Command showCommand(ShowOptions& options);

}  // namespace inspect
