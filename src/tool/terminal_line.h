// A line at the bottom of a terminal that is drawn over itself.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

namespace tool {

// Does nothing if `stream` is not a terminal. Clears the line at the end.
class TerminalLine {
 public:
  explicit TerminalLine(std::FILE* stream);
  static TerminalLine onOutput() { return TerminalLine(stdout); }
  static TerminalLine onErrors() { return TerminalLine(stderr); }
  ~TerminalLine() { wipe(); }
  TerminalLine(const TerminalLine&) = delete;
  TerminalLine& operator=(const TerminalLine&) = delete;

  // Whether to draw a line now: the stream is a terminal, and the last line has been visible for a while.
  bool isDue() const;
  // Draws the text, due or not.
  void draw(const std::string& text);
  // Makes room for other text.
  void wipe();
  bool isTerminal() const { return isTerminal_; }

 private:
  using Clock = std::chrono::steady_clock;

  std::FILE* stream_;
  bool isTerminal_;
  bool isDrawn_ = false;
  Clock::time_point drawn_ = Clock::now();
};

}  // namespace tool
