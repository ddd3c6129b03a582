#include "process/prepare_process.h"

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <limits>

#include "process/stack_room.h"

namespace {

void keepOpen(int stream) {
  if (::fcntl(stream, F_GETFD) >= 0 || errno != EBADF) return;
  // The lowest free number is the one missing, as they are seen to in ascending order.
  if (::open("/dev/null", O_RDWR) == stream) return;
  std::fputs("/dev/null cannot be opened in place of a standard stream that is closed\n", stderr);
  std::_Exit(EXIT_FAILURE);
}

}  // namespace

void prepareProcess() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) keepOpen(stream);
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

void requireRoomOnStack() {
  if (makeRoomOnStack()) return;
  std::fputs(kNoRoomOnStack, stderr);
  std::fputs("\n", stderr);
  std::_Exit(EXIT_FAILURE);
}

void keepMemory() {
  ::mallopt(M_MMAP_MAX, 0);
  ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}
