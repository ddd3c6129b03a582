// One line on a terminal that says how far a long run has got.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

#include "tool/terminal_line.h"

namespace tool {

// "job.frd: 45 %, 210 MB/s, 12 s left". `seconds` have gone by; when all is read, "job.frd: writing the database".
std::string progressText(const std::string& name, std::uint64_t done, std::uint64_t all, double seconds);

// Draws over its own line a few times a second, and only where `stream` is a terminal. Wipes the line at the end.
class ProgressLine {
 public:
  ProgressLine(const std::string& name, std::FILE* stream);

  void show(std::uint64_t done, std::uint64_t all);
  // Makes room for other text; the line comes back when it is shown next.
  void wipe() { line_.wipe(); }

 private:
  using Clock = std::chrono::steady_clock;

  std::string name_;
  TerminalLine line_;
  Clock::time_point begin_ = Clock::now();
};

}  // namespace tool
