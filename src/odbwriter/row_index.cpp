#include "odbwriter/row_index.h"

#include <utility>

namespace odbstore {

RowIndex makeRowIndex(std::vector<int> sources, std::int64_t count) {
  RowIndex index{std::move(sources), {}};
  std::vector<int> stored(static_cast<std::size_t>(count), -1);
  for (int& row : index.rowOf) {
    int& known = stored[static_cast<std::size_t>(row)];
    if (known < 0) {
      known = static_cast<int>(index.source.size());
      index.source.push_back(row);
    }
    row = known;
  }
  return index;
}

}  // namespace odbstore
