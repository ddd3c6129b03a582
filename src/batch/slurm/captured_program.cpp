#include "batch/slurm/captured_program.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <system_error>

#include "base/descriptor.h"

namespace batch {

namespace {

struct Pipe {
  base::Descriptor reading;
  base::Descriptor writing;

  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    reading = base::Descriptor(ends[0]);
    writing = base::Descriptor(ends[1]);
  }
};

// Reads what there is. False at the end.
bool readInto(std::string& text, int file) {
  std::array<char, 4096> piece;
  const ssize_t got = ::read(file, piece.data(), piece.size());
  if (got > 0) text.append(piece.data(), static_cast<std::size_t>(got));
  return got > 0 || (got < 0 && errno == EINTR);
}

void readBoth(const Pipe& output, const Pipe& errors, Answer& answer) {
  std::array<pollfd, 2> open = {pollfd{output.reading.get(), POLLIN, 0}, pollfd{errors.reading.get(), POLLIN, 0}};
  while (open[0].fd >= 0 || open[1].fd >= 0) {
    if (::poll(open.data(), open.size(), -1) < 0 && errno != EINTR) return;
    for (pollfd& file : open) {
      if (file.fd < 0 || file.revents == 0) continue;
      if (!readInto(&file == open.data() ? answer.output : answer.errors, file.fd)) file.fd = -1;
      file.revents = 0;
    }
  }
}

int waitFor(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

Answer ask(const std::vector<std::string>& command) {
  Pipe output;
  Pipe errors;
  posix_spawn_file_actions_t files;
  ::posix_spawn_file_actions_init(&files);
  ::posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&files, output.writing.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&files, errors.writing.get(), STDERR_FILENO);
  std::vector<std::string> texts = command;
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  pid_t child = -1;
  const int failure = ::posix_spawnp(&child, arguments[0], &files, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&files);
  if (failure == ENOENT) return {127, "", command.front() + ": not found"};
  if (failure != 0) throw std::system_error(failure, std::generic_category(), command.front());
  output.writing = base::Descriptor();
  errors.writing = base::Descriptor();
  Answer answer;
  readBoth(output, errors, answer);
  answer.status = waitFor(child);
  return answer;
}

}  // namespace batch
