// Work on files that nobody vouches for, done in a process that may crash.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace base {

struct ChildLimits {
  // Bytes of address space beyond those that the process has when it starts. Not kept under the address sanitizer,
  // which needs terabytes of it.
  std::uint64_t memory = 0;
  std::chrono::seconds processorTime{0};
  std::chrono::milliseconds time{0};
};

// Limits for reading a file of so many bytes: enough for any honest one.
ChildLimits limitsFor(std::int64_t bytes);

// Runs `work` in a child process and returns what it returns, 64 KiB at most. The child has these limits, leaves no
// core, gets no new rights, has no open file of its parent's and no standard streams, and dies with it. Throws
// FileError: with the text of `work`'s own where it has thrown one, else with a line that names `file` and says that
// reading it crashed, took more memory or time than allowed, or ended the process. What the child did to files stays
// done. Must be called while no other thread runs: a child has only the one that made it.
std::string runLimited(const std::string& file, const ChildLimits& limits, const std::function<std::string()>& work);

}  // namespace base
