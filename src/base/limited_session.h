// A limited program that answers questions about a file, one after the other.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "base/descriptor.h"
#include "base/limited_program.h"

namespace base {

// As runLimited() (limited_program.h) for a program written with serveLimitedRequests() (limited_work.h). The limits
// are those of all answers together, that of an answer's size those of one; the clock runs only while an answer is
// waited for.
class LimitedSession {
 public:
  // Starts the program. `file` names what is read, in errors. Throws FileError.
  LimitedSession(std::string file, const LimitedProgram& program, const ProgramLimits& limits);
  // Ends it.
  ~LimitedSession();
  LimitedSession(const LimitedSession&) = delete;
  LimitedSession& operator=(const LimitedSession&) = delete;

  // Throws FileError where the program answers with an error, or has ended.
  std::string ask(std::string_view request);
  // Likewise an answer that fills `answer`; another length is an error.
  void ask(std::string_view request, std::span<std::byte> answer);

  // False once the program has ended, by itself or because it was late.
  bool isAlive() const { return child_ > 0; }

 private:
  std::size_t begin(std::string_view request);
  void receive(std::span<std::byte> to);
  [[noreturn]] void end(bool isLate);

  std::string file_;
  ProgramLimits limits_;
  std::chrono::steady_clock::duration waited_{};
  Descriptor socket_;
  pid_t child_ = -1;
  std::string reason_;  // why it has ended
};

}  // namespace base
