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
#include <string_view>

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

bool sendAll(std::string_view message) {
  for (std::size_t sent = 0; sent < message.size();) {
    const ssize_t written = ::write(kLimitedPipe, message.data() + sent, message.size() - sent);
    if (written <= 0 && errno != EINTR) return false;
    sent += written > 0 ? static_cast<std::size_t>(written) : 0;
  }
  return true;
}

void send(Ending ending, const std::string& text) { sendAll(static_cast<char>(ending) + text + kEndMark); }

bool sendPart(Ending ending, std::string_view text) {
  AnswerHead head;
  head.ending = ending;
  head.bytes = text.size();
  return sendAll({reinterpret_cast<const char*>(&head), sizeof(head)}) && sendAll(text);
}

bool receiveAll(std::span<char> to) {
  while (!to.empty()) {
    const ssize_t count = ::read(kLimitedPipe, to.data(), to.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    to = to.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

// Does `work` and tells `send` what came of it.
template <class Work, class Send>
auto sendResult(const Work& work, const Send& send) {
  try {
    return send(Ending::value, work());
  } catch (const FileError& error) {
    return send(Ending::fileError, error.object() + '\0' + error.reason());
  } catch (const std::bad_alloc&) {
    return send(Ending::memory, "");
  } catch (const std::exception& error) {
    return send(Ending::otherError, error.what());
  } catch (...) {
    return send(Ending::otherError, "unknown exception");
  }
}

}  // namespace

int serveLimited(int argc, char** argv, const std::function<std::string(std::span<char*> arguments)>& work) {
  const bool isStartedRight = argc >= kFirstOwnArgument && ::fcntl(kLimitedPipe, F_GETFD) >= 0;
  if (!isStartedRight || !confine(argv)) return EXIT_FAILURE;
  sendResult([&] { return work({argv + kFirstOwnArgument, argv + argc}); }, send);
  // Destructors could touch memory that was damaged while reading.
  std::_Exit(EXIT_SUCCESS);
}

int serveLimitedRequests(int argc, char** argv, const std::function<std::string(std::string_view request)>& answer) {
  const bool isStartedRight = argc >= kFirstOwnArgument && ::fcntl(kLimitedPipe, F_GETFD) >= 0;
  if (!isStartedRight || !confine(argv)) return EXIT_FAILURE;
  std::uint32_t bytes = 0;
  while (receiveAll({reinterpret_cast<char*>(&bytes), sizeof(bytes)})) {
    std::string request(bytes, '\0');
    if (!receiveAll(request)) break;
    if (!sendResult([&] { return answer(request); }, sendPart)) break;
  }
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace base
