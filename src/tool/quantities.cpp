#include "tool/quantities.h"

#include <fmt/core.h>

#include <charconv>
#include <cmath>
#include <map>
#include <optional>

#include "tool/command.h"

namespace tool {

namespace {

// A number, from above 0 to `greatest`, and one of the units after it.
std::optional<double> quantityFrom(const std::string& text, const std::map<std::string, double>& units,
                                   double greatest) {
  double number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  if (failure != std::errc() || !std::isfinite(number)) return std::nullopt;
  const auto unit = units.find(std::string(end, text.data() + text.size()));
  if (unit == units.end()) return std::nullopt;
  const double value = number * unit->second;
  return value > 0 && value <= greatest ? std::optional(value) : std::nullopt;
}

}  // namespace

std::chrono::milliseconds durationFrom(const std::string& text) {
  const auto seconds = quantityFrom(text, {{"", 1}, {"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86400}}, 366.0 * 86400);
  if (!seconds) throw UsageError("\"" + text + "\" is not a time such as 90, 90s, 5m, 2h, 1d");
  return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(*seconds));
}

std::uint64_t bytesFrom(const std::string& text) {
  const auto bytes = quantityFrom(text, {{"", 1}, {"K", 1e3}, {"M", 1e6}, {"G", 1e9}, {"T", 1e12}}, 1e18);
  if (!bytes) throw UsageError("\"" + text + "\" is not a size such as 500M, 1.5G, 200000000");
  return static_cast<std::uint64_t>(std::ceil(*bytes));
}

std::string durationText(double seconds) {
  if (seconds < 100) return fmt::format("{:.0f} s", seconds);
  if (seconds < 6000) return fmt::format("{:.0f} min", seconds / 60);
  if (seconds < 360000) return fmt::format("{:.1f} h", seconds / 3600);
  return fmt::format("{:.1f} days", seconds / 86400);
}

}  // namespace tool
