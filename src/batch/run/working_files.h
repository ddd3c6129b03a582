// What programs leave in the directory of an input, when the results go into a pack.
#pragma once

#include <string>

namespace batch {

// The content of an open log. Of one over 1 MiB the last MiB from the beginning of a line on, after a line that says
// how much is left out. Empty if it cannot be read.
std::string logText(int log);

// Removes the files of an extraction, the log last, and the directory unless something else is in it, such as a
// database that is kept. Call it while the lock on the log is held. What cannot be removed stays, silently.
void removeWorkingFiles(const std::string& directory);

}  // namespace batch
