// The command line of `kolvex verify`.
#pragma once

#include <string>
#include <vector>

namespace verify {

struct VerifyOptions {
  std::vector<std::string> files;
  bool isQuiet = false;  // say only what is wrong

  // Set when there is nothing to run: print `message` (on standard error when the status is not 0) and exit.
  bool isDone = false;
  int status = 0;
  std::string message;
};

// Reads the arguments, the program's name not among them. Touches no file. Wrong usage has status 2.
VerifyOptions parseVerifyOptions(std::vector<std::string> arguments);

}  // namespace verify
