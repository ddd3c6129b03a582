#include "odbwriter/row_index.h"

namespace odbstore {

RowIndex makeRowIndex(std::span<const int> sources, std::int64_t count) {
  RowIndex index;
  index.rowOf.reserve(sources.size());
  std::vector<int> stored(static_cast<std::size_t>(count), -1);
  for (const int source : sources) {
    int& row = stored[static_cast<std::size_t>(source)];
    if (row < 0) {
      row = static_cast<int>(index.source.size());
      index.source.push_back(source);
    }
    index.rowOf.push_back(row);
  }
  return index;
}

}  // namespace odbstore
