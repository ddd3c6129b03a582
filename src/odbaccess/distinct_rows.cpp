#include "odbaccess/distinct_rows.h"

namespace odb_detail {

DistinctRows::DistinctRows(int storedRows, int last) : count_(storedRows + 1), last_(last) {}

void DistinctRows::finish(int last) {
  last_ = last;
  count_ = static_cast<int>(rows_.size()) + 1;
  bool isInOrder = true;
  for (std::size_t i = 0; i < rows_.size(); ++i) isInOrder = isInOrder && rows_[i] == static_cast<int>(i);
  if (isInOrder) {
    rows_ = {};
  } else {
    rows_.push_back(last);
    rows_.shrink_to_fit();
  }
}

bool DistinctRows::isOneStretch(int from, int count) const {
  const bool isBeforeLast = from + count < count_;
  if (rows_.empty() && isBeforeLast) return true;
  for (int i = from + 1; i < from + count; ++i) {
    if ((*this)[i] != (*this)[i - 1] + 1) return false;
  }
  return true;
}

}  // namespace odb_detail
