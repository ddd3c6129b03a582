// Finds out which objects the damaged arrays of a file with a catalog belong to.
#pragma once

#include <string>
#include <vector>

#include "odbstore/catalog.h"
#include "odbstore/sum_check.h"

namespace verify {

// For each run of damaged pieces of one array its bytes and what they hold, in file order, for example
// `bytes 4096..12287 are damaged: step "Step-1", field "S", block 0, frames 3..5`.
std::vector<std::string> describeDamage(const odbstore::Catalog& catalog,
                                        const std::vector<odbstore::DamagedPiece>& pieces);

}  // namespace verify
