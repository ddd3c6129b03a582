// An index that stores equal rows once.
#pragma once

#include <cstdint>
#include <vector>

namespace odbstore {

// Of a list that says for each row which of some source rows it is.
struct RowIndex {
  std::vector<int> rowOf;  // for each row the stored row that it is; these are numbered in the order of their first use
  std::vector<int> source;  // for each stored row the source row that it is

  std::int64_t storedRows() const { return static_cast<std::int64_t>(source.size()); }
};

// `sources` holds, for each row, a source row from 0 to `count` - 1; source rows that are not among them are not
// stored.
RowIndex makeRowIndex(std::vector<int> sources, std::int64_t count);

// Whether an index saves enough to be worth the indirection for readers.
constexpr bool isIndexWorthwhile(std::int64_t rows, std::int64_t storedRows) { return 4 * (rows - storedRows) >= rows; }

}  // namespace odbstore
