// Whether a catalog can be relied on: by whoever follows its references, and by the extraction.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

struct CheckedColumns {
  std::vector<Extent> extents;         // of all arrays, in the order of the file
  std::vector<std::size_t> firstSums;  // of each array its first sum, and one more; empty without sums
};

// Checks all that the accessors of Catalog rely on: lengths of columns, ends, references, codes, places of arrays.
// Throws StoreError, which names `file`, for what no program of ours would write.
CheckedColumns checkColumns(const columns::Catalog& columns, const std::string& file, std::int64_t arraysEnd);

// Is told what is wrong with which object, by its path in the file. May throw.
using Complain = std::function<void(const std::string& object, const std::string& reason)>;

// Checks what the layout demands of the content: names, lists of frames, shapes, label arrays.
void checkContent(const Catalog& catalog, const Complain& complain);

}  // namespace odbstore
