// Selection: bringing the value to a position that a full sort would put there.
#pragma once

#include <cstddef>
#include <utility>

// The values that the engineering extremes read can lie outside of the part that a selection leaves sorted, so results
// are the same only where values move the same way. The movements written here are therefore part of the result: a
// quickselect with a three-way partition (Bentley and McIlroy, Engineering a Sort Function, 1993, give the median
// of medians and the run of equals) that ends in an insertion sort. Values are equivalent when neither is before the
// other; with NaN among them that is no order any more, but every loop stays within the range and ends.
namespace selection_detail {

inline constexpr std::ptrdiff_t kLongestSorted = 32;
inline constexpr std::ptrdiff_t kLongestSimpleMedian = 41;

template <class Number, class Before>
void medianOfThree(Number* a, Number* b, Number* c, Before before) {
  if (before(*b, *a)) std::swap(*a, *b);
  if (before(*c, *b)) {
    std::swap(*b, *c);
    if (before(*b, *a)) std::swap(*a, *b);
  }
}

// Brings the pivot to `mid`.
template <class Number, class Before>
void choosePivot(Number* first, Number* mid, Number* last, Before before) {
  Number* const tail = last - 1;
  const std::ptrdiff_t count = last - first;
  if (count <= kLongestSimpleMedian) {
    medianOfThree(first, mid, tail, before);
    return;
  }
  const std::ptrdiff_t step = count / 8;
  medianOfThree(first, first + step, first + 2 * step, before);
  medianOfThree(mid - step, mid, mid + step, before);
  medianOfThree(tail - 2 * step, tail - step, tail, before);
  medianOfThree(first + step, mid, tail - step, before);
}

template <class Number>
struct EqualRun {
  Number* begin;
  Number* end;
};

// Reorders the range into values before the pivot, the run of its equals, values behind it; returns the run.
template <class Number, class Before>
EqualRun<Number> partition(Number* first, Number* last, Before before) {
  Number* const mid = first + (last - first) / 2;
  choosePivot(first, mid, last, before);
  const auto equivalent = [&](const Number& a, const Number& b) { return !before(a, b) && !before(b, a); };
  Number* begin = mid;
  Number* end = mid + 1;
  while (begin > first && equivalent(begin[-1], *begin)) --begin;
  while (end < last && equivalent(*end, *begin)) ++end;
  Number* up = end;
  Number* down = begin;
  for (;;) {
    for (; up < last && !before(*up, *begin); ++up) {
      if (before(*begin, *up)) continue;
      if (end != up) std::swap(*end, *up);
      ++end;
    }
    for (; down > first && !before(*begin, down[-1]); --down) {
      if (before(down[-1], *begin)) continue;
      --begin;
      if (begin != down - 1) std::swap(*begin, down[-1]);
    }
    if (down == first && up == last) return {begin, end};
    if (down == first) {
      // No room below: the run moves up by one.
      if (end != up) std::swap(*begin, *end);
      ++end;
      std::swap(*begin, *up);
      ++begin;
      ++up;
    } else if (up == last) {
      // No room above: the run moves down by one.
      --down;
      --begin;
      if (down != begin) std::swap(*down, *begin);
      --end;
      std::swap(*begin, *end);
    } else {
      --down;
      std::swap(*up, *down);
      ++up;
    }
  }
}

template <class Number, class Before>
void insertionSort(Number* first, Number* last, Before before) {
  if (first == last) return;
  for (Number* next = first + 1; next < last; ++next) {
    const Number value = *next;
    Number* hole = next;
    if (before(value, *first)) {
      for (; hole != first; --hole) *hole = hole[-1];
    } else {
      for (; before(value, hole[-1]); --hole) *hole = hole[-1];
    }
    *hole = value;
  }
}

}  // namespace selection_detail

// Reorders [first, last) so that `target` (which may be `last`) holds what a full sort by `before` would put there,
// nothing ahead of it belongs behind it and nothing behind it belongs ahead of it.
template <class Number, class Before>
void selectPosition(Number* first, Number* target, Number* last, Before before) {
  while (last - first > selection_detail::kLongestSorted) {
    const auto [begin, end] = selection_detail::partition(first, last, before);
    if (end <= target) {
      first = end;
    } else if (begin <= target) {
      return;
    } else {
      last = begin;
    }
  }
  selection_detail::insertionSort(first, last, before);
}
