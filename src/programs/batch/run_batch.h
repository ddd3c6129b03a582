// `kolvex batch`: from its options to its exit status.
#pragma once

#include "run_options.h"

namespace batch {

inline constexpr int kInterrupted = 3;

// Runs the batch and reports on the standard streams. Returns the exit status. Throws InputListError for inputs
// that cannot be listed, and base::FileError where the batch cannot go on.
int runBatch(const RunOptions& options);

}  // namespace batch
