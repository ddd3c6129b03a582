// The four numbers that every quantity is reduced to.
#pragma once

#include <limits>

// The values from which running extremes start: the lowest and highest finite number.
template <class Number>
inline constexpr Number kLowest = std::numeric_limits<Number>::lowest();
template <class Number>
inline constexpr Number kHighest = std::numeric_limits<Number>::max();

// The maximum and minimum so far. Comparisons are strict: of equal values the first stays, a NaN replaces nothing.
template <class Number>
struct RunningExtremes {
  Number max = kLowest<Number>;
  Number min = kHighest<Number>;

  void take(Number value) {
    if (value > max) max = value;
    if (value < min) min = value;
  }
};

// Maximum, minimum, and the extremes that pass over a percentage of the most extreme values.
struct Extremes {
  double max = 0.0;
  double min = 0.0;
  double engineeringMax = 0.0;
  double engineeringMin = 0.0;

  void resetPlain() {
    max = kLowest<double>;
    min = kHighest<double>;
  }
  void resetEngineering() {
    engineeringMax = kLowest<double>;
    engineeringMin = kHighest<double>;
  }
  void takePlain(double value) {
    if (value > max) max = value;
    if (value < min) min = value;
  }
};

// Extremes that have seen no value yet.
inline Extremes startingExtremes() {
  Extremes extremes;
  extremes.resetPlain();
  extremes.resetEngineering();
  return extremes;
}
