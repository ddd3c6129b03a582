// What `kolvex show` does.
#pragma once

#include "show_options.h"

namespace inspect {

// Prints what the options ask for. Returns the exit status. Throws base::FileError, std::system_error.
int show(const ShowOptions& options);

}  // namespace inspect
