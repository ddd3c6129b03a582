// Which calls of the system a process may make, kept by seccomp (seccomp(2)).
#pragma once

enum class CallSet {
  openFiles,  // of open files, memory and threads; renaming and removing
  oneFile,    // of open files and memory
  writing,    // likewise, and opening files
};

// Puts all threads of the process under a filter; every other call fails with EPERM from then on. Returns whether it is
// in force. Takes PR_SET_NO_NEW_PRIVS to be set.
bool filterCalls(CallSet set);
