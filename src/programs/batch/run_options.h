// The command line of `kolvex batch`.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/command.h"

namespace batch {

struct RunOptions {
  std::vector<std::string> paths;
  std::string list;  // file with names, "-" for standard input
  std::string configuration;
  std::string directory;
  std::size_t jobs = 0;  // 0: as many as there are processors
  std::chrono::milliseconds timeout{0};
  std::uint64_t memory = 0;
  std::size_t retries = 0;
  bool keepsGoing = false;
  bool skipsFailed = false;
  std::vector<std::string> importOptions;
  bool keepsDatabases = false;
  bool isSynced = false;
  bool isPacked = false;
  std::chrono::milliseconds grace{0};
  bool isJson = false;
  std::size_t index = 0;
  std::size_t size = 1;
  bool isSlurm = false;
  std::size_t tasks = 10;
  bool isWaiting = false;                 // for the jobs on Slurm
  std::vector<std::string> slurmOptions;  // for sbatch
};

// Fills `options` when it parses; they must live as long.
tool::Command runCommand(RunOptions& options);

// Takes the arguments after "--" if "--slurm" is before it: options for sbatch. Without
// that
// "--" has its usual meaning, that no option follows.
std::vector<std::string> takeSlurmOptions(std::vector<std::string>& arguments);

// The options of this command that a task on Slurm gets too: all but inputs, directory, slice and jobs.
std::vector<std::string> forwardedArguments(const RunOptions& options);

// What parsing cannot see: what is missing or does not go together; empty if all is well.
std::string refusalOf(const RunOptions& options);

}  // namespace batch
