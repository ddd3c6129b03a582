// The inside of a program that reads files nobody vouches for.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace base {

// What main() of such a program does: takes the limits that it was started with upon itself, gives away what rights it
// can, does `work` with the arguments that are the program's own, and answers through the pipe with what that returns
// or throws (FileError, std::bad_alloc or anything else). `work` finds the file at the descriptor kLimitedFile
// (limited_protocol.h). Ends the process, but where it was not started by runLimited(): then it does nothing and
// returns an exit status that is not 0.
int serveLimited(int argc, char** argv, const std::function<std::string(std::span<char*> arguments)>& work);

// The same of a program that LimitedSession has started: answers one request after the other, until there are no more.
// What `answer` throws is the answer to that request alone.
int serveLimitedRequests(int argc, char** argv, const std::function<std::string(std::string_view request)>& answer);

}  // namespace base
