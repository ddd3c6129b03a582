// One line on a terminal that says how far a long run has got.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace tool {

// "job.frd: 45 %, 210 MB/s, 12 s left". `seconds` have gone by; when all is read, "job.frd: writing the database".
std::string progressText(const std::string& name, std::uint64_t done, std::uint64_t all, double seconds);

// Draws over its own line a few times a second, and only where `stream` is a terminal. Wipes the line at the end.
class ProgressLine {
 public:
  ProgressLine(const std::string& name, std::FILE* stream);
  ~ProgressLine() { wipe(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void show(std::uint64_t done, std::uint64_t all);
  // Makes room for other text; the line comes back when it is shown next.
  void wipe();

 private:
  using Clock = std::chrono::steady_clock;

  std::string name_;
  std::FILE* stream_;
  bool isTerminal_;
  bool isDrawn_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point drawn_ = begin_;
};

}  // namespace tool
