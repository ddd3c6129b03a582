#include "base/limited_work.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <new>

#include "base/file_error.h"
#include "base/limited_protocol.h"

namespace base {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCanLimitMemory = false;
#else
constexpr bool kCanLimitMemory = true;
#endif

void limit(int resource, rlim_t soft, rlim_t hard) {
  const rlimit both{soft, hard};
  ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

std::uint64_t addressSpaceInUse() {
  std::ifstream statm("/proc/self/statm");
  std::uint64_t pages = 0;
  statm >> pages;
  return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

bool confine(char** argv) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  // The parent may have died before this took effect.
  if (std::to_string(::getppid()) != argv[kParentArgument]) return false;
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  ::prctl(PR_SET_DUMPABLE, 0);
  limit(RLIMIT_CORE, 0, 0);
  const rlim_t seconds = std::strtoull(argv[kSecondsArgument], nullptr, 10);
  limit(RLIMIT_CPU, seconds, seconds + 1);
  if constexpr (kCanLimitMemory) {
    const rlim_t bytes = addressSpaceInUse() + std::strtoull(argv[kMemoryArgument], nullptr, 10);
    limit(RLIMIT_AS, bytes, bytes);
  }
  // Files that the parent had open and did not mean to pass on.
  ::close_range(kLimitedFile + 1, ~0U, 0);
  return true;
}

void send(Ending ending, const std::string& text) {
  const std::string message = static_cast<char>(ending) + text + kEndMark;
  for (std::size_t sent = 0; sent < message.size();) {
    const ssize_t written = ::write(kLimitedPipe, message.data() + sent, message.size() - sent);
    if (written <= 0 && errno != EINTR) return;
    sent += written > 0 ? static_cast<std::size_t>(written) : 0;
  }
}

}  // namespace

int serveLimited(int argc, char** argv, const std::function<std::string(std::span<char*> arguments)>& work) {
  const bool isStartedRight = argc >= kFirstOwnArgument && ::fcntl(kLimitedPipe, F_GETFD) >= 0;
  if (!isStartedRight || !confine(argv)) return EXIT_FAILURE;
  try {
    send(Ending::value, work({argv + kFirstOwnArgument, argv + argc}));
  } catch (const FileError& error) {
    send(Ending::fileError, error.object() + '\0' + error.reason());
  } catch (const std::bad_alloc&) {
    send(Ending::memory, "");
  } catch (const std::exception& error) {
    send(Ending::otherError, error.what());
  } catch (...) {
    send(Ending::otherError, "unknown exception");
  }
  // Destructors could touch memory that was damaged while reading.
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace base
