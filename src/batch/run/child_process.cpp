#include "batch/run/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace batch {

namespace {

// Files, directory and signals that the program starts with.
class Start {
 public:
  explicit Start(const ProgramCall& call) {
    ::posix_spawn_file_actions_init(&files_);
    ::posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&files_, call.log, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&files_, call.log, STDERR_FILENO);
    ::posix_spawn_file_actions_addchdir_np(&files_, call.directory.c_str());
    sigset_t none;
    sigset_t usual;
    ::sigemptyset(&none);
    ::sigfillset(&usual);
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setsigdefault(&attributes_, &usual);
    ::posix_spawnattr_setpgroup(&attributes_, 0);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  ~Start() {
    ::posix_spawn_file_actions_destroy(&files_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  Start(const Start&) = delete;
  Start& operator=(const Start&) = delete;

  pid_t run(const std::string& path, char** arguments) {
    pid_t child = -1;
    const int failure = ::posix_spawn(&child, path.c_str(), &files_, &attributes_, arguments, environ);
    if (failure != 0) throw std::system_error(failure, std::generic_category(), path);
    return child;
  }

 private:
  posix_spawn_file_actions_t files_{};
  posix_spawnattr_t attributes_{};
};

pid_t start(const ProgramCall& call) {
  std::vector<std::string> texts = {call.path};
  texts.insert(texts.end(), call.arguments.begin(), call.arguments.end());
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  return Start(call).run(call.path, arguments.data());
}

}  // namespace

ChildProcess::ChildProcess(const ProgramCall& call) : id_(start(call)) {}

ChildProcess::~ChildProcess() {
  if (isReaped_) return;
  end();
  reap();
}

bool ChildProcess::hasEnded() const {
  siginfo_t ended{};
  // It stays to be reaped, so that its number cannot become somebody else's.
  return ::waitid(P_PID, static_cast<id_t>(id_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid == id_;
}

void ChildProcess::end() { ::kill(-id_, SIGKILL); }

int ChildProcess::reap() {
  siginfo_t ended{};
  while (::waitid(P_PID, static_cast<id_t>(id_), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  // While the leader is not reaped the number of the group is its own.
  end();
  int status = 0;
  while (::waitpid(id_, &status, 0) < 0 && errno == EINTR) {
  }
  isReaped_ = true;
  return status;
}

}  // namespace batch
