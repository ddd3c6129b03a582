// A program in its own process group, which is ended as a whole.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace batch {

struct ProgramCall {
  std::string path;
  std::vector<std::string> arguments;  // after the program's name
  std::string directory;               // that it works in
  int log = -1;                        // open file that gets its output and errors
};

class ChildProcess {
 public:
  // Starts the program, with nothing to read, no signal blocked and no other file of ours open. Throws
  // std::system_error where it cannot be started.
  explicit ChildProcess(const ProgramCall& call);
  // Ends the group if it is still at work, and waits for it.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t id() const { return id_; }
  // Whether the program has ended. Never waits.
  bool hasEnded() const;
  // Kills the whole group.
  void end();
  // Waits for the program, kills what is left of its group, and returns the status as waitpid() has it.
  int reap();

 private:
  pid_t id_ = -1;
  bool isReaped_ = false;
};

}  // namespace batch
