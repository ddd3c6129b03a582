// The versions of the kernels that the tests run.
#pragma once

#include <vector>

#include "kernels/kernels.h"

// All that this machine can run; on x86-64 also the newest for AVX-512 with its instructions replaced by what they do,
// so that a machine without them tests its loops.
const std::vector<const kernels::Kernels*>& testedVersions();
