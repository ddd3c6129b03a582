// What `kolvex params` does.
#pragma once

#include "params_options.h"

namespace inspect {

// Writes the table. Returns the exit status. Throws base::FileError.
int params(const ParamsOptions& options);

}  // namespace inspect
