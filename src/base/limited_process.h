// How limited programs start and end, for runLimited() and LimitedSession.
#pragma once

#include <sys/types.h>

#include <string>

#include "base/limited_program.h"

namespace base {

// Starts the program with `pipe`, its end of what it answers through. Throws FileError for `file`, the name of what is
// read, where that fails.
pid_t startLimited(const std::string& file, const LimitedProgram& program, const ProgramLimits& limits, int pipe);

// How the program has ended, or ends.
int statusOf(pid_t child);

// Why a program has no answer that ended with this status, or was late.
std::string reasonOf(int status, bool isLate, const ProgramLimits& limits);

}  // namespace base
