// A catalog as text: one line per statement, independent of the order in which it was built.
#pragma once

#include <string>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

// "<object>: <statement>", ascending. Two catalogs of one file say the same when their lines are equal. Checksums are
// left out because a catalog made from the HDF5 structure has none.
std::vector<std::string> linesOf(const Catalog& catalog);

}  // namespace odbstore
