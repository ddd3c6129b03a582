// Numbers that are known by the digits with which a file prints them.
#pragma once

namespace importers::calculix {

// All that rounds to a printed number.
struct Rounded {
  double low = 0.0;
  double high = 0.0;

  bool meets(const Rounded& other) const { return low <= other.high && other.low <= high; }
  bool contains(double value) const { return low <= value && value <= high; }
};

// Digits that count of the times in each file: seven in printed tables, six in the status file. Result files have six
// below 1, and ten from there on.
inline constexpr int kDigitsOfTables = 7;
inline constexpr int kDigitsOfStatus = 6;
int digitsOfResults(double value);

Rounded rounded(double value, int digits);

// The number with so many digits: what a file prints of it.
double withDigits(double value, int digits);

// What is left of `total` after `start`, without the digits that the subtraction makes up; `digits` are those of
// `total`.
double difference(double total, double start, int digits);

}  // namespace importers::calculix
