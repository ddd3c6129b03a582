// What a selection has to do with an array, written a second time.
#pragma once

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

// The selection once more, straight from its description, in indices of a list and with nothing shared.
template <class Number>
class SelectionOracle {
 public:
  using List = std::vector<Number>;
  SelectionOracle(List list, std::function<bool(double, double)> before)
      : v(std::move(list)), precedes(std::move(before)) {}

  List select(int target) {
    int lo = 0;
    int hi = static_cast<int>(v.size());
    while (hi - lo > 32) {
      int pb = 0;
      int pe = 0;
      split(lo, hi, pb, pe);
      if (target >= pe) {
        lo = pe;
      } else if (target >= pb) {
        return v;
      } else {
        hi = pb;
      }
    }
    sort(lo, hi);
    return v;
  }

 private:
  bool lt(int i, int j) { return precedes(at(i), at(j)); }
  double at(int i) { return static_cast<double>(v[static_cast<std::size_t>(i)]); }
  bool eq(int i, int j) { return !lt(i, j) && !lt(j, i); }
  void exchange(int i, int j) {
    const Number kept = v[static_cast<std::size_t>(i)];
    v[static_cast<std::size_t>(i)] = v[static_cast<std::size_t>(j)];
    v[static_cast<std::size_t>(j)] = kept;
  }
  void median(int a, int b, int c) {
    if (lt(b, a)) exchange(a, b);
    if (lt(c, b)) {
      exchange(b, c);
      if (lt(b, a)) exchange(a, b);
    }
  }
  void split(int lo, int hi, int& pb, int& pe) {
    const int n = hi - lo;
    const int mid = lo + n / 2;
    const int tail = hi - 1;
    if (n > 41) {
      const int s = n / 8;
      median(lo, lo + s, lo + 2 * s);
      median(mid - s, mid, mid + s);
      median(tail - 2 * s, tail - s, tail);
      median(lo + s, mid, tail - s);
    } else {
      median(lo, mid, tail);
    }
    pb = mid;
    pe = mid + 1;
    while (pb != lo && eq(pb - 1, pb)) pb -= 1;
    while (pe != hi && eq(pe, pb)) pe += 1;
    int up = pe;
    int down = pb;
    while (true) {
      while (up != hi) {
        if (lt(up, pb)) break;
        if (!lt(pb, up)) {
          if (up != pe) exchange(up, pe);
          pe += 1;
        }
        up += 1;
      }
      while (down != lo) {
        if (lt(pb, down - 1)) break;
        if (!lt(down - 1, pb)) {
          pb -= 1;
          if (pb != down - 1) exchange(pb, down - 1);
        }
        down -= 1;
      }
      if (down == lo && up == hi) return;
      if (down == lo) {
        if (pe != up) exchange(pb, pe);
        pe += 1;
        exchange(pb, up);
        pb += 1;
        up += 1;
      } else if (up == hi) {
        down -= 1;
        pb -= 1;
        if (down != pb) exchange(down, pb);
        pe -= 1;
        exchange(pb, pe);
      } else {
        down -= 1;
        exchange(up, down);
        up += 1;
      }
    }
  }
  void sort(int lo, int hi) {
    for (int i = lo + 1; i < hi; ++i) {
      int to = i;
      if (lt(i, lo)) {
        to = lo;
      } else {
        while (lt(i, to - 1)) to -= 1;
      }
      std::rotate(v.begin() + to, v.begin() + i, v.begin() + i + 1);
    }
  }

  List v;
  std::function<bool(double, double)> precedes;
};

// The array as a selection of its position `target` leaves it.
template <class Number>
std::vector<Number> selectedAscending(std::vector<Number> list, int target) {
  return SelectionOracle<Number>(std::move(list), [](double a, double b) { return a < b; }).select(target);
}
template <class Number>
std::vector<Number> selectedDescending(std::vector<Number> list, int target) {
  return SelectionOracle<Number>(std::move(list), [](double a, double b) { return a > b; }).select(target);
}

// The numbers 1 to n in a scrambled order that is the same everywhere; n must have no divisor in common with `step`.
template <class Number>
std::vector<Number> scrambledNumbers(int n, int step) {
  std::vector<Number> numbers;
  for (int i = 0; i < n; ++i) numbers.push_back(static_cast<Number>((i * step) % n + 1));
  return numbers;
}
