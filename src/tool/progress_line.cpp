#include "tool/progress_line.h"

#include <fmt/core.h>

#include "base/control_characters.h"

namespace tool {

namespace {

constexpr double kMegabyte = 1e6;

}  // namespace

std::string progressText(const std::string& name, std::uint64_t done, std::uint64_t all, double seconds) {
  if (done >= all) return name + ": writing the database";
  const auto bytes = static_cast<double>(done);
  const double rate = seconds > 0 ? bytes / seconds : 0;
  const double share = all > 0 ? bytes / static_cast<double>(all) : 0;
  std::string text = fmt::format("{}: {:.0f} %, {:.0f} MB/s", name, 100 * share, rate / kMegabyte);
  if (rate > 0) text += fmt::format(", {:.0f} s left", (static_cast<double>(all) - bytes) / rate);
  return text;
}

ProgressLine::ProgressLine(const std::string& name, std::FILE* stream) : name_(base::escaped(name)), line_(stream) {}

void ProgressLine::show(std::uint64_t done, std::uint64_t all) {
  // The last state stays on the screen longest, and nothing draws over it.
  if (!line_.isDue() && done < all) return;
  const std::chrono::duration<double> seconds = Clock::now() - begin_;
  line_.draw(progressText(name_, done, all, seconds.count()));
}

}  // namespace tool
