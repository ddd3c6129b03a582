#include "base/limited_program.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>

#include "base/descriptor.h"
#include "base/file_error.h"
#include "base/limited_protocol.h"

namespace base {

namespace {

constexpr std::uint64_t kMebi = std::uint64_t{1} << 20;

// Signals that must end the program even if this process ignores them.
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
    // Libraries print to streams that belong to the caller.
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

// The same open file under a number that is free in the program.
Descriptor outOfTheWay(int file) {
  return Descriptor(::fcntl(file, F_DUPFD_CLOEXEC, std::max(kLimitedPipe, kLimitedFile) + 1));
}

pid_t start(const std::string& file, const LimitedProgram& program, const ProgramLimits& limits, int pipe) {
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

// Everything the program sends until it closes its end; empty if that is too much, nothing if the time is up.
std::optional<std::string> receive(int pipe, const ProgramLimits& limits) {
  const auto end = std::chrono::steady_clock::now() + limits.time;
  std::string message;
  std::vector<char> bytes(std::size_t{64} << 10U);
  while (message.size() <= limits.answer + 2) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    pollfd readable{pipe, POLLIN, 0};
    constexpr std::int64_t kHour = 3'600'000;
    const int ready = left.count() <= 0 ? 0 : ::poll(&readable, 1, static_cast<int>(std::min(left.count(), kHour)));
    if (ready == 0 && left.count() <= kHour) return std::nullopt;
    if (ready == 0) continue;
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

std::string resultOf(const std::string& file, std::string message, const ProgramLimits& limits) {
  const auto ending = static_cast<Ending>(message.front());
  message.pop_back();
  message.erase(0, 1);
  switch (ending) {
    case Ending::value:
      return message;
    case Ending::fileError: {
      const std::size_t end = message.find('\0');
      if (end != std::string::npos) throw FileError(file, message.substr(0, end), message.substr(end + 1));
      break;
    }
    case Ending::memory:
      throw FileError(file, "", fmt::format("reading it took more than {} MiB of memory", limits.memory / kMebi));
    case Ending::otherError:
      break;
  }
  throw FileError(file, "", "reading it failed: " + message);
}

}  // namespace

ProgramLimits limitsFor(std::int64_t bytes) {
  const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(bytes, 0));
  // A block is in memory once as stored and once as written. Processor time allows 2 MiB/s: files that consist of small
  // objects only are read at 7 MiB/s and upgraded at 17 MiB/s, all others much faster. The wall clock limit allows for
  // a busy machine. A catalog is hardly larger than the file's structure.
  const std::chrono::seconds time(2 + static_cast<std::int64_t>(size / (2 * kMebi)));
  return {64 * kMebi + 16 * size, time, 20 * time, kMebi + 2 * size};
}

std::string runLimited(const std::string& file, const LimitedProgram& program, const ProgramLimits& limits) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw FileError(file, "", std::strerror(errno));
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const pid_t child = start(file, program, limits, writing.get());
  writing = Descriptor();
  std::optional<std::string> message = receive(reading.get(), limits);
  // One that is late. One that is exiting keeps its status, and one that only closed its end is not waited for.
  ::kill(child, SIGKILL);
  const int status = statusOf(child);
  const bool isWhole = message && message->size() >= 2 && message->back() == kEndMark;
  const bool isGood = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (!isWhole || !isGood) throw FileError(file, "", reasonOf(status, !message, limits));
  return resultOf(file, std::move(*message), limits);
}

}  // namespace base
