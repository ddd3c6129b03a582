#include "base/limited_process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "base/descriptor.h"
#include "base/file_error.h"
#include "base/limited_protocol.h"

namespace base {

namespace {

// Signals that are to end the program, whatever this process does with them.
constexpr std::array kDeadlySignals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGXCPU, SIGXFSZ, SIGPIPE};

// The files and signals that the program starts with.
class Start {
 public:
  Start() {
    ::posix_spawn_file_actions_init(&files_);
    ::posix_spawnattr_init(&attributes_);
  }
  Start(const Start&) = delete;
  Start& operator=(const Start&) = delete;
  ~Start() {
    ::posix_spawn_file_actions_destroy(&files_);
    ::posix_spawnattr_destroy(&attributes_);
  }

  // Returns the child, or -1 with errno set.
  pid_t run(const std::string& path, char** arguments, int pipe, int file) {
    // Libraries explain themselves on streams that belong to the caller.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      ::posix_spawn_file_actions_addopen(&files_, stream, "/dev/null", O_RDWR, 0);
    }
    ::posix_spawn_file_actions_adddup2(&files_, pipe, kLimitedPipe);
    ::posix_spawn_file_actions_adddup2(&files_, file, kLimitedFile);
    sigset_t none;
    sigset_t deadly;
    ::sigemptyset(&none);
    ::sigemptyset(&deadly);
    for (const int signal : kDeadlySignals) ::sigaddset(&deadly, signal);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setsigdefault(&attributes_, &deadly);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t child = -1;
    const int status = ::posix_spawn(&child, path.c_str(), &files_, &attributes_, arguments, environ);
    if (status == 0) return child;
    errno = status;
    return -1;
  }

 private:
  posix_spawn_file_actions_t files_;
  posix_spawnattr_t attributes_;
};

// The same open file under a number that no other takes in the program.
Descriptor outOfTheWay(int file) {
  return Descriptor(::fcntl(file, F_DUPFD_CLOEXEC, std::max(kLimitedPipe, kLimitedFile) + 1));
}

}  // namespace

pid_t startLimited(const std::string& file, const LimitedProgram& program, const ProgramLimits& limits, int pipe) {
  std::vector<std::string> texts = {program.path, std::to_string(::getpid()), std::to_string(limits.memory),
                                    std::to_string(limits.processorTime.count())};
  texts.insert(texts.end(), program.arguments.begin(), program.arguments.end());
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  const Descriptor pipeAside = outOfTheWay(pipe);
  const Descriptor fileAside = outOfTheWay(program.file);
  const pid_t child =
      pipeAside && fileAside ? Start().run(program.path, arguments.data(), pipeAside.get(), fileAside.get()) : -1;
  if (child < 0) {
    throw FileError(file, "",
                    fmt::format("cannot be read: {} cannot be started ({})", program.path, std::strerror(errno)));
  }
  return child;
}

int statusOf(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

std::string reasonOf(int status, bool isLate, const ProgramLimits& limits) {
  if (isLate)
    return fmt::format("reading it took longer than {:.3g} s", static_cast<double>(limits.time.count()) / 1e3);
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU) {
    return fmt::format("reading it took more than {} s of processor time", limits.processorTime.count());
  }
  if (WIFSIGNALED(status)) {
    return fmt::format("reading it crashed ({}): the file is damaged, or was made to do so",
                       ::strsignal(WTERMSIG(status)));
  }
  return fmt::format("reading it ended the process (status {}): the file is damaged, or was made to do so",
                     WEXITSTATUS(status));
}

}  // namespace base
