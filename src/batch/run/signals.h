// The signals that a runner waits for.
#pragma once

#include <csignal>

#include "base/descriptor.h"

namespace batch {

// As long as it lives, SIGCHLD and those that ask a program to end are not delivered but read from here. One that was
// ignored, as by nohup, stays so. One at a time in a process.
class Signals {
 public:
  // Throws std::system_error.
  Signals();
  ~Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  // What to poll.
  int file() const { return file_.get(); }
  // Takes all that have come. Returns whether one of them asks the program to end.
  bool takeInterruption();

 private:
  sigset_t before_{};
  base::Descriptor file_;
};

}  // namespace batch
