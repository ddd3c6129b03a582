// Rows of a block that belong to a set.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace odb_detail {

class RowSelection {
 public:
  RowSelection() = default;
  // `rows` ascending, each once. Those that lie one after the other take no memory: sets often hold all rows, or a part
  // of the model that was numbered at once.
  explicit RowSelection(std::vector<int> rows) : count_(static_cast<int>(rows.size())) {
    if (count_ == 0) return;
    first_ = rows.front();
    if (rows.back() - first_ == count_ - 1) return;
    rows.shrink_to_fit();
    rows_ = std::move(rows);
  }

  int size() const { return count_; }
  int operator[](int i) const { return rows_.empty() ? first_ + i : rows_[static_cast<std::size_t>(i)]; }
  // How many rows are in memory.
  std::size_t kept() const { return rows_.size(); }

 private:
  int first_ = 0;
  int count_ = 0;
  std::vector<int> rows_;  // empty where they lie one after the other
};

}  // namespace odb_detail
