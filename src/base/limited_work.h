// The main function of a program that reads untrusted files.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace base {

// Applies the limits from the arguments, drops privileges, calls `work` with the program's own arguments, and sends
// what it returns or throws (FileError, std::bad_alloc or anything else) through the pipe. `work` finds the file at the
// descriptor kLimitedFile (limited_protocol.h). Ends the process, unless it was not started by runLimited(): then it
// does nothing and returns a non-zero exit status.
int serveLimited(int argc, char** argv, const std::function<std::string(std::span<char*> arguments)>& work);

// The same of a program that LimitedSession has started: answers one request after the other, until there are no more.
// What `answer` throws is the answer to that request alone.
int serveLimitedRequests(int argc, char** argv, const std::function<std::string(std::string_view request)>& answer);

}  // namespace base
