#include "base/label_index.h"

#include <algorithm>

namespace base {

namespace {

// A table may have so many places per label, and this many in any case.
constexpr std::size_t kPlacesPerLabel = 8;
constexpr std::size_t kSmallTable = 1U << 16;

}  // namespace

LabelIndex::LabelIndex(std::span<const int> labels) {
  if (labels.empty()) return;
  const auto [least, greatest] = std::minmax_element(labels.begin(), labels.end());
  const auto range = static_cast<std::size_t>(static_cast<long>(*greatest) - *least) + 1;
  if (range <= std::max(kSmallTable, kPlacesPerLabel * labels.size())) {
    first_ = *least;
    places_.assign(range, -1);
    fillPlaces(labels);
  } else {
    fillSorted(labels);
  }
}

void LabelIndex::fillPlaces(std::span<const int> labels) {
  int place = 0;
  for (const int label : labels) {
    int& known = places_[static_cast<std::size_t>(label - first_)];
    if (known < 0) {
      known = place;
    } else {
      repeated_ = label;
    }
    ++place;
  }
}

void LabelIndex::fillSorted(std::span<const int> labels) {
  sorted_.reserve(labels.size());
  int place = 0;
  for (const int label : labels) sorted_.emplace_back(label, place++);
  std::sort(sorted_.begin(), sorted_.end());
  const auto twice = std::adjacent_find(sorted_.begin(), sorted_.end(),
                                        [](const auto& a, const auto& b) { return a.first == b.first; });
  if (twice != sorted_.end()) repeated_ = twice->first;
}

int LabelIndex::placeOf(int label) const {
  if (!places_.empty()) {
    const long at = label - first_;
    return at >= 0 && at < static_cast<long>(places_.size()) ? places_[static_cast<std::size_t>(at)] : -1;
  }
  const auto found = std::lower_bound(sorted_.begin(), sorted_.end(), std::pair{label, 0});
  return found != sorted_.end() && found->first == label ? found->second : -1;
}

}  // namespace base
