// Whether a catalog can be trusted: first its references, then its contents.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

struct CheckedColumns {
  std::vector<Extent> extents;         // of all arrays, in file order
  std::vector<std::size_t> firstSums;  // of each array its first sum, and one more; empty without sums
};

// Checks everything the accessors of Catalog rely on: lengths of columns, ends, references, codes, positions of arrays.
// Throws StoreError, naming `file`, for anything kolvex would not write.
CheckedColumns checkColumns(const columns::Catalog& columns, const std::string& file, std::int64_t arraysEnd);

// Called with the path of a faulty object and what is wrong with it. May throw.
using Complain = std::function<void(const std::string& object, const std::string& reason)>;

// Checks what the layout requires of the content: names, lists of frames, shapes, label arrays.
void checkContent(const Catalog& catalog, const Complain& complain);

}  // namespace odbstore
