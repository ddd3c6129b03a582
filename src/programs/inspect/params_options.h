// The command line of `kolvex params`.
#pragma once

#include <string>
#include <vector>

#include "tool/command.h"

namespace inspect {

struct ParamsOptions {
  std::string file;
  std::vector<std::string> patterns;
  std::string form = "csv";
  std::string output;  // empty for standard output
  std::string database;
  std::string configuration;
  std::vector<std::string> required;
  bool isUnmarked = false;
};

// Exit statuses of its own.
inline constexpr int kNotMarked = 3;
inline constexpr int kNotThere = 4;

tool::Command paramsCommand(ParamsOptions& options);

// Why options do not go together; empty where they do.
std::string refusalOf(const ParamsOptions& options);

}  // namespace inspect
