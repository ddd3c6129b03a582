#include <algorithm>
#include <numeric>

#include "odbaccess/block_storage.h"
#include "odbaccess/guard.h"

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

const std::vector<int>& LocationStorage::nodeLabels() const {
  return guarded([&]() -> const std::vector<int>& { return stored_->nodeLabels(); });
}

const std::vector<int>& LocationStorage::elementLabels() const {
  return guarded([&]() -> const std::vector<int>& { return stored_->elementLabels(); });
}

const std::vector<int>& LocationStorage::integrationPoints() const {
  return guarded([&]() -> const std::vector<int>& { return stored_->integrationPoints(); });
}

int LocationStorage::numberOfElements() {
  if (!numberOfElements_) numberOfElements_ = countDifferent(elementLabels());
  return *numberOfElements_;
}

namespace {

// What is kept of the rows of sets, in all sets of a location: 16 MiB.
constexpr std::size_t kMostKeptRows = std::size_t{4} << 20U;

}  // namespace

SharedRows LocationStorage::rowsIn(const std::shared_ptr<SetStorage>& set) {
  static const SharedRows none = std::make_shared<const RowSelection>();
  const bool byElement = set->kind() == SetKind::element;
  const odbstore::Position position = info().position;
  if (byElement ? !odbstore::hasElementLabels(position) : !odbstore::hasNodeLabels(position)) return none;
  const auto known = rowsOfSets_.find(set);
  if (known != rowsOfSets_.end()) return known->second;
  const std::vector<int>& wanted = set->labelsIn(info().instance);
  if (wanted.empty()) return none;
  std::unique_ptr<LabelIndex>& index = byElement ? elementIndex_ : nodeIndex_;
  if (!index) index = std::make_unique<LabelIndex>(byElement ? elementLabels() : nodeLabels());
  auto rows = std::make_shared<const RowSelection>(index->rowsOf(wanted));
  if (keptRows_ + rows->kept() <= kMostKeptRows) {
    keptRows_ += rows->kept();
    rowsOfSets_.emplace(set, rows);
  }
  return rows;
}

namespace {

// What fits into the cache beside what is done with it.
constexpr std::size_t kPieceBytes = std::size_t{256} << 10U;

}  // namespace

LocationCache::LocationCache() : readAhead_(std::make_shared<ReadAhead>(kPieceBytes)) {}

std::shared_ptr<LocationStorage> LocationCache::of(const std::shared_ptr<const odbstore::StoredLocation>& stored) {
  std::shared_ptr<LocationStorage>& kept = locations_[stored.get()];
  if (!kept) kept = std::make_shared<LocationStorage>(stored, readAhead_);
  return kept;
}

}  // namespace odb_detail
