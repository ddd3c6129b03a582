// What `kolvex check` does.
#pragma once

#include "check_options.h"

namespace inspect {

// Prints what there is to say of a configuration. Returns the exit status. Throws base::FileError, std::system_error.
int check(const CheckOptions& options);

}  // namespace inspect
