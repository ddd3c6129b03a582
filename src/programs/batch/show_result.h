// `kolvex batch show`: from its options to what it prints.
#pragma once

#include "show_options.h"

namespace batch {

// Prints it on standard output. Throws base::FileError.
void showResult(const ShowOptions& options);

}  // namespace batch
