// What `kolvex locate` does.
#pragma once

#include "locate_options.h"

namespace inspect {

// Prints what is asked for and returns the exit status. Throws base::FileError, std::system_error.
int locateRecords(const LocateOptions& options);

}  // namespace inspect
