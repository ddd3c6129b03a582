// What shells complete after `kolvex import`: names of what the results on the line hold.
#pragma once

#include <string>
#include <vector>

namespace importers {

// For "--field" the fields, for "--set" the sets, for "--step" the numbers of the steps that the results hold, which
// are named on the line among `words`; none for results that cannot be read, and for lines that are wrong. Says
// nothing. Reads no rows; where even that takes more than a second or two, as with meshes of hundreds of megabytes, it
// ends the process with status 1, for nobody waits for a suggestion.
std::vector<std::string> completeNames(const std::string& option, const std::vector<std::string>& words);

}  // namespace importers
