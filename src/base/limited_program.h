// Runs work on untrusted files in a separate program, which may crash.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace base {

struct ProgramLimits {
  // Bytes of address space in addition to what the program has when it starts. Not enforced under sanitizers, which
  // need terabytes of it.
  std::uint64_t memory = 0;
  std::chrono::seconds processorTime{0};
  std::chrono::milliseconds time{0};
  std::uint64_t answer = 0;  // bytes
};

// Limits for reading a file of so many bytes: enough for any genuine one.
ProgramLimits limitsFor(std::int64_t bytes);

// A program that is written for this with serveLimited() (limited_work.h).
struct LimitedProgram {
  std::string path;
  std::vector<std::string> arguments;
  int file = -1;  // the open file to read, passed on as kLimitedFile
};

// Starts the program with its limits and returns its answer. It leaves no core file, gains no privileges, has no open
// files except the given one and a pipe, and dies with the thread that started it. Throws FileError for `file`: with
// the object and reason that the program reports, or saying that reading the file crashed, exceeded memory or time, or
// ended the process. Changes the program made to other files remain. The calling process may have threads.
std::string runLimited(const std::string& file, const LimitedProgram& program, const ProgramLimits& limits);

}  // namespace base
