// The last message of a program.
#pragma once

#include <string>

namespace batch {

// The last line of an open log that says what went wrong: not empty, not the extraction's closing line, without its
// "**ERROR**", at most 500 bytes. Empty if there is none.
std::string lastWords(int log);

}  // namespace batch
