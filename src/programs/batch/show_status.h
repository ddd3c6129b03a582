// `kolvex batch status`: from its options to its exit status.
#pragma once

#include <string>

#include "batch/collect/batch_counts.h"
#include "status_options.h"

namespace batch {

inline constexpr int kUnfinished = 3;

// "5000 inputs: 4900 done, 60 failed, 2 running, 38 missing", and a line for each reason.
std::string statusText(const BatchCounts& counts);
std::string statusJson(const BatchCounts& counts);

// 0 if all are done, 1 where none is left but some have failed, else kUnfinished.
int exitStatusOf(const BatchCounts& counts);

// Prints it, again and again where that is asked for. Returns the exit status. Throws base::FileError.
int showStatus(const StatusOptions& options);

}  // namespace batch
