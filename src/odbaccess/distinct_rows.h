// Stored rows that a selection of rows leads to, each once.
#pragma once

#include <cstddef>
#include <vector>

namespace odb_detail {

// In the order in which the selection first leads to them, and at the end once more the one that its last row is: so
// whoever goes through them meets every value that the selection has, the first of equal ones first, and the last row
// last.
class DistinctRows {
 public:
  // Of all rows of a location: stored rows are numbered in the order of their first use.
  DistinctRows(int storedRows, int last);
  // `storedRow(i)` is the stored row of row i of `count` rows, at least one, below `storedRows`.
  template <class StoredRow>
  DistinctRows(int count, int storedRows, StoredRow&& storedRow) {
    std::vector<bool> isMet(static_cast<std::size_t>(storedRows));
    for (int i = 0; i < count; ++i) {
      const int row = storedRow(i);
      if (isMet[static_cast<std::size_t>(row)]) continue;
      isMet[static_cast<std::size_t>(row)] = true;
      rows_.push_back(row);
    }
    finish(storedRow(count - 1));
  }

  int size() const { return count_; }
  int operator[](int i) const {
    return rows_.empty() ? (i < count_ - 1 ? i : last_) : rows_[static_cast<std::size_t>(i)];
  }
  // Whether `count` of them, at least one, from `from` on are stored one after the other.
  bool isOneStretch(int from, int count) const;
  // How many are in memory.
  std::size_t kept() const { return rows_.size(); }

 private:
  void finish(int last);

  int count_ = 0;
  int last_ = 0;
  std::vector<int> rows_;  // empty where they are 0, 1, 2, ... and then the last one
};

}  // namespace odb_detail
