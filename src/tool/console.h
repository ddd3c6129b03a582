// Standard streams of a command that prints line by line.
#pragma once

#include <string>

namespace tool {

// Adds to standard output; what cannot be written shows in finishOutput().
void print(const std::string& text);
// Prints a line on standard error. A failure to do so is ignored: there is nowhere to report it.
void complain(const std::string& line);
// Sends what is printed to its reader. Throws std::system_error where not all of it gets there.
void finishOutput();

}  // namespace tool
