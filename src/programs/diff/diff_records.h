// What `kolvex diff` does.
#pragma once

#include "diff_options.h"

namespace inspect {

// Prints what differs and returns the exit status. Throws base::FileError, std::system_error.
int diffRecords(const DiffOptions& options);

}  // namespace inspect
