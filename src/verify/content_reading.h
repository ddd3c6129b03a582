// Reads what a catalog only points to.
#pragma once

#include <memory>

#include "odbstore/database_file.h"
#include "verify/findings.h"

namespace verify {

// Reads all labels, indices, meshes and histories, and unpacks all packed rows: numbers that do not fit, indices out of
// their range and chunks that do not unpack into just their frame are findings. The content must have been found to fit
// its catalog (odbstore/catalog_check.h).
void readContent(const std::shared_ptr<const odbstore::DatabaseFile>& file, Findings& findings);

}  // namespace verify
