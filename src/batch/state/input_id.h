// The name of an input's directory.
#pragma once

#include <string>

namespace batch {

// The name of the file's directory, the file's own without its ending, and a sum of the whole path:
// "/runs/0017/job.odb" is "0017.job-6hd0p1v2k9wq". It depends on the path alone, so that it is the same in every run,
// whatever else is run with it. At most 110 bytes of letters, digits and "._-"; other bytes become "_".
std::string inputId(const std::string& absolutePath);

}  // namespace batch
