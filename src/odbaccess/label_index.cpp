#include "odbaccess/label_index.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

namespace odb_detail {

LabelIndex::LabelIndex(const std::vector<int>& labels) : rows_(labels.size()) {
  std::iota(rows_.begin(), rows_.end(), 0);
  const auto labelOf = [&](int row) { return labels[static_cast<std::size_t>(row)]; };
  if (!std::is_sorted(labels.begin(), labels.end())) {
    std::stable_sort(rows_.begin(), rows_.end(), [&](int a, int b) { return labelOf(a) < labelOf(b); });
  }
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (i > 0 && labelOf(rows_[i]) == labelOf(rows_[i - 1])) continue;
    labels_.push_back(labelOf(rows_[i]));
    first_.push_back(static_cast<int>(i));
  }
  first_.push_back(static_cast<int>(rows_.size()));
}

std::vector<int> LabelIndex::rowsOf(const std::vector<int>& labels) const {
  std::vector<int> rows;
  rows.reserve(labels.size());
  auto from = labels_.begin();
  for (const int label : labels) {
    // The next label is mostly near: steps that double find a stretch for the search.
    auto to = from;
    for (std::ptrdiff_t step = 1; to != labels_.end() && *to < label; step *= 2) {
      from = to + 1;
      to += std::min(step, labels_.end() - to);
    }
    from = std::lower_bound(from, to, label);
    if (from == labels_.end()) break;
    if (*from != label) continue;
    const auto at = static_cast<std::size_t>(from - labels_.begin());
    rows.insert(rows.end(), rows_.begin() + first_[at], rows_.begin() + first_[at + 1]);
  }
  if (!std::is_sorted(rows.begin(), rows.end())) std::sort(rows.begin(), rows.end());
  return rows;
}

int countDifferent(const std::vector<int>& labels) {
  if (labels.empty()) return 0;
  const auto [least, most] = std::minmax_element(labels.begin(), labels.end());
  const std::int64_t range = std::int64_t{*most} - *least + 1;
  if (range > std::int64_t{64} * static_cast<std::int64_t>(labels.size())) {
    std::vector<int> sorted = labels;
    std::sort(sorted.begin(), sorted.end());
    return static_cast<int>(std::unique(sorted.begin(), sorted.end()) - sorted.begin());
  }
  std::vector<bool> seen(static_cast<std::size_t>(range), false);
  for (const int label : labels) seen[static_cast<std::size_t>(std::int64_t{label} - *least)] = true;
  return static_cast<int>(std::count(seen.begin(), seen.end(), true));
}

}  // namespace odb_detail
