#include "odbaccess/location_storage.h"

#include <cstddef>

#include "odbaccess/guard.h"

namespace odb_detail {

const std::vector<int>& LocationStorage::nodeLabels() const {
  return guarded([&]() -> const std::vector<int>& { return stored_->nodeLabels(); });
}

const std::vector<int>& LocationStorage::elementLabels() const {
  return guarded([&]() -> const std::vector<int>& { return stored_->elementLabels(); });
}

const std::vector<int>& LocationStorage::integrationPoints() const {
  return guarded([&]() -> const std::vector<int>& { return stored_->integrationPoints(); });
}

const int* LocationStorage::rowOf() const {
  if (!stored_->isIndexed()) return nullptr;
  return guarded([&] { return stored_->rowOf().data(); });
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

std::shared_ptr<const DistinctRows> LocationStorage::distinctRowsOf(const SharedRows& selection) {
  const auto known = distinctRows_.find(selection);
  if (known != distinctRows_.end()) return known->second;
  const int* const rowOf = this->rowOf();
  const auto stored = static_cast<int>(stored_->storedRows());
  auto distinct = selection ? std::make_shared<const DistinctRows>(selection->size(), stored,
                                                                   [&](int i) { return rowOf[(*selection)[i]]; })
                            : std::make_shared<const DistinctRows>(stored, rowOf[stored_->rows() - 1]);
  if (keptRows_ + distinct->kept() <= kMostKeptRows) {
    keptRows_ += distinct->kept();
    distinctRows_.emplace(selection, distinct);
  }
  return distinct;
}

}  // namespace odb_detail
