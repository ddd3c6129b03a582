// A catalog as text: a line for each thing that it says, whatever the order in which it was built.
#pragma once

#include <string>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

// "<object>: <what is said of it>", ascending. Two catalogs of one file say the same when their lines are equal. Sums
// are left out: who reads HDF5's structure does not have them.
std::vector<std::string> linesOf(const Catalog& catalog);

}  // namespace odbstore
