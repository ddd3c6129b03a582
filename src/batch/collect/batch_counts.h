// The progress of a batch.
#pragma once

#include <map>
#include <string>

#include "batch/state/batch_directory.h"

namespace batch {

struct BatchCounts {
  std::size_t inputs = 0;
  std::size_t done = 0;
  std::size_t failed = 0;
  std::size_t running = 0;
  std::size_t missing = 0;
  std::map<std::string, std::size_t> why;  // failed ones by their reason
};

// Looks at the record of every input. Throws base::FileError for a directory that is not a batch's.
BatchCounts countInputs(const BatchDirectory& directory);

}  // namespace batch
