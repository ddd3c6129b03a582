// The command line of `kolvex diff`.
#pragma once

#include <string>
#include <vector>

#include "inspect/compare/tolerances.h"
#include "tool/command.h"

namespace inspect {

// Exit statuses, those of cmp.
inline constexpr int kSame = 0;
inline constexpr int kDifferent = 1;
inline constexpr int kTrouble = 2;

struct DiffOptions {
  std::string a;
  std::string b;
  Tolerance tolerance;
  std::string tolerances;              // a file
  std::string configuration;           // of databases
  std::vector<std::string> databases;  // of files of records
  std::size_t most = 20;
  bool isQuiet = false;
  bool isJson = false;
};

// Fills `options` when it parses; they must live as long.
tool::Command diffCommand(DiffOptions& options);

}  // namespace inspect
