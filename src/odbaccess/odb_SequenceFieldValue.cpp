#include "odbaccess/odb_SequenceFieldValue.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "odbaccess/block_storage.h"

odb_SequenceFieldValue::odb_SequenceFieldValue(std::vector<std::shared_ptr<const odb_detail::BlockStorage>> blocks)
    : blocks_(std::move(blocks)) {
  for (const auto& block : blocks_) {
    firstRow_.push_back(size_);
    size_ += block->rows();
  }
}

odb_FieldValue odb_SequenceFieldValue::constGet(unsigned index) const {
  const int row = static_cast<int>(index);
  const auto after = std::upper_bound(firstRow_.begin(), firstRow_.end(), row);
  const auto block = static_cast<std::size_t>(after - firstRow_.begin()) - 1;
  return odb_FieldValue(blocks_[block], row - firstRow_[block]);
}

void odb_SequenceFieldValue::forEachDistinctRun(const std::function<void(odb_FieldValueRun&)>& take) const {
  for (const auto& block : blocks_) {
    odb_FieldValueRun run(odb_detail::BlockStorage::distinctOf(block), 0);
    take(run);
  }
}

void odb_SequenceFieldValue::forEachRun(const std::function<void(odb_FieldValueRun&)>& take) const {
  for (std::size_t i = 0; i < blocks_.size(); ++i) {
    odb_FieldValueRun run(blocks_[i], firstRow_[i]);
    take(run);
  }
}
