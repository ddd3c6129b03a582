// The command line of `kolvex run`.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/command.h"

namespace single_run {

// Exit statuses beside those that all commands share.
inline constexpr int kInterrupted = 3;
inline constexpr int kIncomplete = 4;

struct RunOptions {
  std::string input;
  std::string configuration;
  std::string directory;
  std::vector<std::string> required;  // patterns of names of records
  std::vector<std::string> importOptions;
  std::chrono::milliseconds timeout{0};
  std::uint64_t memory = 0;
  bool keepsDatabase = false;
  bool isJson = false;
};

// Fills `options` when it parses; they must live as long.
tool::Command runCommand(RunOptions& options);

}  // namespace single_run
