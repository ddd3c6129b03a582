// What `kolvex run` does.
#pragma once

#include "run_options.h"

namespace single_run {

// Runs, prints the summary and returns the exit status. Throws base::FileError, std::system_error.
int runJob(const RunOptions& options);

}  // namespace single_run
