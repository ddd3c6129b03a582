#include "base/limited_child.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <new>
#include <optional>

#include "base/file_error.h"
#include "base/output_file.h"

namespace base {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCanLimitMemory = false;
#else
constexpr bool kCanLimitMemory = true;
#endif

constexpr std::size_t kLongestAnswer = std::size_t{64} << 10;
constexpr std::uint64_t kMebi = std::uint64_t{1} << 20;

// The first byte of what the child sends: how it ended. Nothing that it says is trusted beyond that.
enum class Ending : char { value = 'V', fileError = 'S', otherError = 'E', memory = 'M' };

// In the middle of a crash more may be sent than meant; the last byte says that all was.
constexpr char kEndMark = '.';

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

// Above the standard streams. The parent's locks are to go with the parent, not with a child that outlives it for a
// moment.
void closeAllBut(int file) {
  ::close_range(STDERR_FILENO + 1, static_cast<unsigned>(file) - 1, 0);
  ::close_range(static_cast<unsigned>(file) + 1, ~0U, 0);
}

void confine(const ChildLimits& limits, pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  // It may have died before that was said.
  if (::getppid() != parent) ::_exit(1);
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  ::prctl(PR_SET_DUMPABLE, 0);
  limit(RLIMIT_CORE, 0, 0);
  const auto seconds = static_cast<rlim_t>(limits.processorTime.count());
  limit(RLIMIT_CPU, seconds, seconds + 1);
  if constexpr (kCanLimitMemory) {
    const rlim_t bytes = addressSpaceInUse() + limits.memory;
    limit(RLIMIT_AS, bytes, bytes);
  }
  // Libraries explain themselves on streams that belong to the caller.
  const int nowhere = ::open("/dev/null", O_RDWR);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nowhere, stream);
  // A crash is to be one at once, whatever handlers the parent has.
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGXCPU}) std::signal(signal, SIG_DFL);
}

void send(int pipe, Ending ending, const std::string& text) {
  std::string message = static_cast<char>(ending) + text.substr(0, kLongestAnswer) + kEndMark;
  for (std::size_t sent = 0; sent < message.size();) {
    const ssize_t written = ::write(pipe, message.data() + sent, message.size() - sent);
    if (written <= 0 && errno != EINTR) return;
    sent += written > 0 ? static_cast<std::size_t>(written) : 0;
  }
}

[[noreturn]] void beChild(int pipe, const ChildLimits& limits, pid_t parent, const std::function<std::string()>& work) {
  closeAllBut(pipe);
  confine(limits, parent);
  try {
    send(pipe, Ending::value, work());
  } catch (const FileError& error) {
    send(pipe, Ending::fileError, error.what());
  } catch (const std::bad_alloc&) {
    send(pipe, Ending::memory, "");
  } catch (const std::exception& error) {
    send(pipe, Ending::otherError, error.what());
  } catch (...) {
    send(pipe, Ending::otherError, "unknown exception");
  }
  // Exit handlers and buffers are the parent's.
  ::_exit(0);
}

// All that the child sends until it closes its end, or an empty text when that is too much; nothing when the time is
// over.
std::optional<std::string> receive(int pipe, std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  std::string message;
  std::array<char, 4096> bytes{};
  while (message.size() <= kLongestAnswer + 2) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    pollfd readable{pipe, POLLIN, 0};
    const int ready = left.count() <= 0 ? 0 : ::poll(&readable, 1, static_cast<int>(left.count()));
    if (ready == 0) return std::nullopt;
    if (ready < 0 && errno == EINTR) continue;
    const ssize_t count = ::read(pipe, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return message;
    message.append(bytes.data(), static_cast<std::size_t>(count));
  }
  return std::string();
}

int statusOf(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

std::string reasonOf(int status, bool isLate, const ChildLimits& limits) {
  if (isLate)
    return fmt::format("reading it took longer than {:.3g} s", static_cast<double>(limits.time.count()) / 1e3);
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU) {
    return fmt::format("reading it took more than {} s of processor time", limits.processorTime.count());
  }
  if (WIFSIGNALED(status)) {
    return fmt::format("reading it crashed ({}): the file is damaged, or made to do that",
                       ::strsignal(WTERMSIG(status)));
  }
  return fmt::format("reading it ended the process (status {}): the file is damaged, or made to do that",
                     WEXITSTATUS(status));
}

// An error whose text is complete already.
struct Repeated : FileError {
  explicit Repeated(const std::string& text) : FileError(text.substr(0, text.find(": ")), "", textBehind(text)) {}

  static std::string textBehind(const std::string& text) {
    const std::size_t colon = text.find(": ");
    return colon == std::string::npos ? text : text.substr(colon + 2);
  }
};

std::string resultOf(const std::string& file, const std::string& message, const ChildLimits& limits) {
  const std::string text = message.substr(1, message.size() - 2);
  switch (static_cast<Ending>(message.front())) {
    case Ending::value:
      return text;
    case Ending::fileError:
      throw Repeated(text);
    case Ending::memory:
      throw FileError(file, "", fmt::format("reading it took more than {} MiB of memory", limits.memory / kMebi));
    case Ending::otherError:
      break;
  }
  throw FileError(file, "", "reading it failed: " + text);
}

}  // namespace

ChildLimits limitsFor(std::int64_t bytes) {
  const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(bytes, 0));
  // A block is in memory once as it is stored and once as it is written, be it packed. The processor has 2 MiB a
  // second: files of nothing but small objects are verified at 7 and upgraded at 17, all others much faster. The clock
  // has patience with a machine that has other things to do.
  const std::chrono::seconds time(2 + static_cast<std::int64_t>(size / (2 * kMebi)));
  return {256 * kMebi + 16 * size, time, 20 * time};
}

std::string runLimited(const std::string& file, const ChildLimits& limits, const std::function<std::string()>& work) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw FileError(file, "", std::strerror(errno));
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const pid_t parent = ::getpid();
  // Without exec: no other thread runs, so that nobody else's lock is held for ever, and HDF5 is between two calls.
  const pid_t child = ::fork();
  if (child < 0) throw FileError(file, "", std::string("no process can be made to read it: ") + std::strerror(errno));
  if (child == 0) beChild(writing.get(), limits, parent, work);
  writing = Descriptor();
  const std::optional<std::string> message = receive(reading.get(), limits.time);
  // One that is late. One that is exiting keeps its status, and one that only closed its end is not waited for.
  ::kill(child, SIGKILL);
  const int status = statusOf(child);
  const bool isWhole = message && message->size() >= 2 && message->back() == kEndMark;
  const bool isGood = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (!isWhole || !isGood) throw FileError(file, "", reasonOf(status, !message, limits));
  return resultOf(file, *message, limits);
}

}  // namespace base
