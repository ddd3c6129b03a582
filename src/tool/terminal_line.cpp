#include "tool/terminal_line.h"

#include <unistd.h>

namespace tool {

namespace {

constexpr std::chrono::milliseconds kPause(200);

}  // namespace

TerminalLine::TerminalLine(std::FILE* stream) : stream_(stream), isTerminal_(::isatty(::fileno(stream)) == 1) {}

bool TerminalLine::isDue() const { return isTerminal_ && Clock::now() - drawn_ >= kPause; }

void TerminalLine::draw(const std::string& text) {
  if (!isTerminal_) return;
  std::fputs(("\r" + text + "\033[K").c_str(), stream_);
  std::fflush(stream_);
  isDrawn_ = true;
  drawn_ = Clock::now();
}

void TerminalLine::wipe() {
  if (!isDrawn_) return;
  std::fputs("\r\033[K", stream_);
  std::fflush(stream_);
  isDrawn_ = false;
}

}  // namespace tool
