// Numbers for property tests: ordinary ones, and those at which reductions go wrong.
#pragma once

#include <limits>
#include <random>

class DrawnNumbers {
 public:
  explicit DrawnNumbers(unsigned seed) : random_(seed) {}

  // From 0 to n.
  int upTo(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n + 1)); }

  // From the next number on there are only so many kinds of them, by chance: all different ones, then a few that come
  // again and again, zeros of both signs, NaN, infinities of both signs.
  void drawKinds() { kinds_ = upTo(4); }

  double number() {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    switch (upTo(kinds_)) {
      case 0:
        return std::normal_distribution<>(0, 100)(random_);
      case 1:
        return upTo(4) - 2;
      case 2:
        return upTo(1) == 0 ? 0.0 : -0.0;
      case 3:
        return std::numeric_limits<double>::quiet_NaN();
      default:
        return upTo(1) == 0 ? kInfinity : -kInfinity;
    }
  }

 private:
  std::mt19937 random_;
  int kinds_ = 0;
};
