// Finds out which objects the damaged bytes of a file with /checksums belong to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "odbstore/checksums.h"
#include "odbstore/inspection.h"
#include "verify/place_names.h"

namespace verify {

// The frames of a block in the order in which its rows are stored; empty if they are unknown.
using FramesOf = std::function<std::vector<int>(const BlockPlace&)>;

// For each run of damaged blocks its bytes and what they hold, for example `bytes 4096..12287 are damaged: step
// "Step-1", field "S", block 0, frames 3..5`. Bytes outside any data set belong to the structure, as do those of data
// sets that can no longer be opened.
std::vector<std::string> describeDamage(const std::vector<std::int64_t>& blocks, const odbstore::ChecksumPlace& place,
                                        std::int64_t fileBytes, const std::vector<odbstore::DataExtent>& extents,
                                        const FramesOf& framesOf);

}  // namespace verify
