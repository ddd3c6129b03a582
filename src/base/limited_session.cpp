#include "base/limited_session.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <utility>

#include "base/file_error.h"
#include "base/limited_process.h"
#include "base/limited_protocol.h"

namespace base {

LimitedSession::LimitedSession(std::string file, const LimitedProgram& program, const ProgramLimits& limits)
    : file_(std::move(file)), limits_(limits) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw FileError(file_, "", std::strerror(errno));
  }
  socket_ = Descriptor(ends[0]);
  const Descriptor other(ends[1]);
  child_ = startLimited(file_, program, limits, other.get());
}

LimitedSession::~LimitedSession() {
  if (child_ <= 0) return;
  ::kill(child_, SIGKILL);
  statusOf(child_);
}

void LimitedSession::end(bool isLate) {
  socket_ = Descriptor();
  // One that is exiting keeps its status.
  ::kill(child_, SIGKILL);
  reason_ = reasonOf(statusOf(std::exchange(child_, -1)), isLate, limits_);
  throw FileError(file_, "", reason_);
}

void LimitedSession::receive(std::span<std::byte> to) {
  using Clock = std::chrono::steady_clock;
  while (!to.empty()) {
    const Clock::time_point begin = Clock::now();
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(limits_.time - waited_);
    pollfd readable{socket_.get(), POLLIN, 0};
    constexpr std::int64_t kHour = 3'600'000;
    const std::int64_t patience = std::clamp<std::int64_t>(left.count(), 0, kHour);
    const int ready = ::poll(&readable, 1, static_cast<int>(patience));
    waited_ += Clock::now() - begin;
    if (ready == 0 && waited_ >= limits_.time) end(true);
    if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
    const ssize_t count = ::recv(socket_.get(), to.data(), to.size(), 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) end(false);
    to = to.subspan(static_cast<std::size_t>(count));
  }
}

std::size_t LimitedSession::begin(std::string_view request) {
  if (!isAlive()) throw FileError(file_, "", reason_);
  const auto length = static_cast<std::uint32_t>(request.size());
  std::string message(sizeof(length), '\0');
  std::memcpy(message.data(), &length, sizeof(length));
  message += request;
  for (std::size_t sent = 0; sent < message.size();) {
    const ssize_t count = ::send(socket_.get(), message.data() + sent, message.size() - sent, MSG_NOSIGNAL);
    if (count <= 0 && errno != EINTR) end(false);
    sent += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  AnswerHead head;
  receive(std::as_writable_bytes(std::span(&head, 1)));
  if (head.ending == Ending::value) return head.bytes;
  // Messages are short, whoever made them.
  constexpr std::uint64_t kLongest = std::uint64_t{64} << 10U;
  if (head.bytes > kLongest) end(false);
  std::string text(head.bytes, '\0');
  receive(std::as_writable_bytes(std::span(text)));
  const std::size_t end = text.find('\0');
  if (head.ending == Ending::memory) {
    throw FileError(file_, "", "reading it took more than " + std::to_string(limits_.memory >> 20U) + " MiB of memory");
  }
  if (head.ending == Ending::fileError && end != std::string::npos) {
    throw FileError(file_, text.substr(0, end), text.substr(end + 1));
  }
  throw FileError(file_, "", "reading it failed: " + text);
}

std::string LimitedSession::ask(std::string_view request) {
  const std::size_t bytes = begin(request);
  if (bytes > limits_.answer) end(false);
  std::string answer(bytes, '\0');
  receive(std::as_writable_bytes(std::span(answer)));
  return answer;
}

void LimitedSession::ask(std::string_view request, std::span<std::byte> answer) {
  if (begin(request) != answer.size()) end(false);
  receive(answer);
}

}  // namespace base
