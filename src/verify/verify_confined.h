// Checks a database where it can do no harm.
#pragma once

#include <string>

#include "verify/verify_file.h"

namespace verify {

// As verifyFile(), in a child process with limits (base/limited_child.h): what makes the HDF5 library crash, take
// all memory or go on for ever is a finding like any other. Of very many findings the first are told, and how many are
// not. No other thread may run.
Verdict verifyConfined(const std::string& path);

}  // namespace verify
