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
  std::string records;  // a configuration; empty for none
  bool isConfiguration = false;
  bool isAll = false;
  bool isJson = false;
};

tool::Command showCommand(ShowOptions& options);

// Why options do not go together; empty where they do.
std::string refusalOf(const ShowOptions& options);

}  // namespace inspect
