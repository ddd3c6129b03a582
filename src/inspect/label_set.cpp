#include "inspect/label_set.h"

#include <algorithm>

namespace inspect {

namespace {

// A bit for a number, 32 for a label.
constexpr std::int64_t kMostNumbersPerLabel = 32;

}  // namespace

LabelSet::LabelSet(const std::vector<int>& labels) {
  if (labels.empty()) return;
  const auto [least, greatest] = std::minmax_element(labels.begin(), labels.end());
  first_ = *least;
  const std::int64_t numbers = std::int64_t{*greatest} - first_ + 1;
  if (numbers <= kMostNumbersPerLabel * static_cast<std::int64_t>(labels.size())) {
    bits_.resize(static_cast<std::size_t>(numbers));
    for (const int label : labels) bits_[static_cast<std::size_t>(label - first_)] = true;
    return;
  }
  sorted_ = labels;
  std::sort(sorted_.begin(), sorted_.end());
  sorted_.erase(std::unique(sorted_.begin(), sorted_.end()), sorted_.end());
}

bool LabelSet::contains(int label) const {
  if (!sorted_.empty()) return std::binary_search(sorted_.begin(), sorted_.end(), label);
  const std::int64_t place = label - first_;
  return place >= 0 && place < static_cast<std::int64_t>(bits_.size()) && bits_[static_cast<std::size_t>(place)];
}

}  // namespace inspect
