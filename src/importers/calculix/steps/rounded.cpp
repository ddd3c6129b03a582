#include "importers/calculix/steps/rounded.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

// Files round half a unit up or down, and sometimes truncate.
constexpr double kUnitsOff = 0.501;
constexpr double kLargestOfTenDigits = 1e10;

// Where the last of the digits stands, as a power of ten.
int lastPlace(double value, int digits) {
  return static_cast<int>(std::floor(std::log10(std::abs(value)))) - digits + 1;
}

bool hasDigits(double value) { return value != 0.0 && std::isfinite(value); }

}  // namespace

int digitsOfResults(double value) { return value >= 1.0 && value < kLargestOfTenDigits ? 10 : 6; }

Rounded rounded(double value, int digits) {
  if (!hasDigits(value)) return {value, value};
  const double off = kUnitsOff * std::pow(10.0, lastPlace(value, digits));
  return {value - off, value + off};
}

double withDigits(double value, int digits) {
  return numberFrom(fmt::format("{:.{}e}", value, digits - 1)).value_or(value);
}

double difference(double total, double start, int digits) {
  if (!hasDigits(total)) return total - start;
  const int decimals = std::max(-lastPlace(total, digits), 0);
  return numberFrom(fmt::format("{:.{}f}", total - start, decimals)).value_or(total - start);
}

}  // namespace importers::calculix
