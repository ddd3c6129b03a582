// What all programs of commands do around their work.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tool/command.h"

namespace tool {

// Prepares the process (process/prepare_process.h), calls `run` with the arguments after the program's name and returns
// its status, or `failed` after an exception, whose text becomes a line on standard error.
int runProgram(int argc, char** argv, const std::function<int(std::vector<std::string> arguments)>& run,
               int failed = kFailed);

}  // namespace tool
