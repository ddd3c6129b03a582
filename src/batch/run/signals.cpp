#include "batch/run/signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>
#include <system_error>

namespace batch {

namespace {

bool isIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t awaited() {
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, SIGCHLD);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (!isIgnored(signal)) ::sigaddset(&set, signal);
  }
  return set;
}

}  // namespace

Signals::Signals() {
  // If SIGCHLD is ignored the system reaps children itself, and their ends go unnoticed.
  std::signal(SIGCHLD, SIG_DFL);
  const sigset_t set = awaited();
  ::sigprocmask(SIG_BLOCK, &set, &before_);
  file_ = base::Descriptor(::signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!file_) throw std::system_error(errno, std::generic_category(), "signalfd");
}

Signals::~Signals() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

bool Signals::takeInterruption() {
  bool isInterruption = false;
  signalfd_siginfo info{};
  while (::read(file_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
    isInterruption = isInterruption || info.ssi_signo != static_cast<unsigned>(SIGCHLD);
  }
  return isInterruption;
}

}  // namespace batch
