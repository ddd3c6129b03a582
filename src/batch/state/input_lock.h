// Who is at work on an input: the lock on its log.
//
// It is a lock of the open file (F_OFD_SETLK), so it is released when the last process closes that. The programs that a
// runner starts have the log as their standard output: the lock stays while they live, be their runner killed.
#pragma once

#include <string>

#include "base/descriptor.h"

namespace batch {

enum class Claim { taken, elsewhere, impossible };

class InputLock {
 public:
  InputLock() = default;
  // Makes the log where there is none, opens it to append, and takes the lock without waiting. On a file system without
  // locks it is taken for free.
  // It counts as elsewhere if whoever had it is removing the log and its directory.
  explicit InputLock(const std::string& log);

  // `impossible`: the log cannot be opened, errno says why.
  Claim claim() const { return claim_; }
  int file() const { return file_.get(); }

 private:
  base::Descriptor file_;
  Claim claim_ = Claim::impossible;
};

// Whether somebody holds the lock of that log. Takes no lock, so it disturbs nobody.
bool isLocked(const std::string& log);

// Ends the process groups on this machine that a killed runner has left at work with this log: those who have it as
// their standard output while nobody has it as a runner does. Returns whether there were any. What cannot be seen, as
// processes of other users and machines, stays.
bool endLeftBehind(const std::string& log);

}  // namespace batch
