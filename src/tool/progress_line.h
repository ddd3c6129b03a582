// One line on a terminal that shows the progress of a long run.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

#include "tool/terminal_line.h"

namespace tool {

// "job.frd: 45 %, 210 MB/s, 12 s left". `seconds` have gone by; when all is read, "job.frd: writing the database".
std::string progressText(const std::string& name, std::uint64_t done, std::uint64_t all, double seconds);

// Redraws its line a few times a second, only if `stream` is a terminal. Clears the line at the end.
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
