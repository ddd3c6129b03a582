// A program that is asked something.
#pragma once

#include <string>
#include <vector>

namespace batch {

struct Answer {
  int status = 0;  // as a shell has it: 127 where the program is not there, 128 and the signal's number
  std::string output;
  std::string errors;
};

// Runs the program, found in the directories of PATH, to its end, with nothing to read. Throws std::system_error where
// the machine has no process left.
Answer ask(const std::vector<std::string>& command);

}  // namespace batch
