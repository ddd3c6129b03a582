// Work on files that nobody vouches for, done by a program of its own that may crash.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace base {

struct ProgramLimits {
  // Bytes of address space beyond those that the program has when it starts. Not kept under sanitizers that
  // need terabytes of it.
  std::uint64_t memory = 0;
  std::chrono::seconds processorTime{0};
  std::chrono::milliseconds time{0};
  std::uint64_t answer = 0;  // bytes
};

// Limits for reading a file of so many bytes: enough for any honest one.
ProgramLimits limitsFor(std::int64_t bytes);

// A program that is written for this with serveLimited() (limited_work.h).
struct LimitedProgram {
  std::string path;
  std::vector<std::string> arguments;
  int file = -1;  // what it reads: an open file of ours, which it gets under its own number
};

// Starts the program, gives it its limits, and returns what it answers. It leaves no core, gets no new rights, has no
// open files but the one it is given and a pipe, and dies with the thread that has started it. Throws FileError: with
// object and reason of the program's own where it has ended with one, else with a reason that says that reading it
// crashed, took more memory or time than allowed, or ended the process; always of `file`, the name of what is read.
// What the program did to other files stays done. Threads may run.
std::string runLimited(const std::string& file, const LimitedProgram& program, const ProgramLimits& limits);

}  // namespace base
