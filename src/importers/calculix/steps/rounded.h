// Numbers that are known only to the digits that a file prints.
#pragma once

namespace importers::calculix {

// The interval of numbers that round to a printed one.
struct Rounded {
  double low = 0.0;
  double high = 0.0;

  bool meets(const Rounded& other) const { return low <= other.high && other.low <= high; }
  bool contains(double value) const { return low <= value && value <= high; }
};

// Significant digits of the times in each file: seven in printed tables, six in the status file. Result files have six
// below 1, and ten from there on.
inline constexpr int kDigitsOfTables = 7;
inline constexpr int kDigitsOfStatus = 6;
int digitsOfResults(double value);

Rounded rounded(double value, int digits);

// The number rounded to so many digits, as a file prints it.
double withDigits(double value, int digits);

// `total` - `start`, without digits that only the subtraction produces; `digits` are those of `total`.
double difference(double total, double start, int digits);

}  // namespace importers::calculix
