// How a batch is run.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "batch/state/batch_directory.h"

namespace batch {

// What a file of results is, and all files that belong to it.
struct Recognised {
  bool isDatabase = false;
  std::vector<std::string> files;
};

struct RunPlan {
  Settings settings;
  std::string configuration;  // path of the copy that the programs get
  std::string version;        // of kolvex
  std::string extraction;     // path of the program
  std::string import;         // likewise
  std::function<Recognised(const std::string& path)> recognise;
  // What the records in a directory lack of what was wanted, to stand in its record; may be empty.
  std::function<std::string(const std::string& directory)> findMissing;

  std::size_t jobs = 1;
  std::chrono::milliseconds timeout{0};  // of one input, 0 for none
  std::uint64_t memory = 0;              // resident bytes of all its programs together, 0 for any number
  std::size_t retries = 0;
  bool keepsGoing = false;
  bool keepsDatabases = false;         // those that are imported
  bool skipsFailed = false;            // does not try again what an earlier run has failed with
  bool isSynced = false;               // brings each result to the disk
  std::chrono::milliseconds grace{0};  // that running inputs have after an interruption
};

}  // namespace batch
