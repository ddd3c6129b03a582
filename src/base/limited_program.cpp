#include "base/limited_program.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <poll.h>
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
#include "base/limited_process.h"
#include "base/limited_protocol.h"

namespace base {

namespace {

constexpr std::uint64_t kMebi = std::uint64_t{1} << 20;

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
  const pid_t child = startLimited(file, program, limits, writing.get());
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
