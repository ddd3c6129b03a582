// `kolvex batch collect`: from its options to its table.
#pragma once

#include "collect_options.h"

namespace batch {

// Writes the table, and says on standard error what is not finished. Throws base::FileError.
void collectTable(const CollectOptions& options);

}  // namespace batch
