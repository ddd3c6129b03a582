#include "process/stack_room.h"

#include <pthread.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstddef>

namespace {

constexpr rlim_t kNeeded = rlim_t{256} << 10U;
constexpr rlim_t kUsual = rlim_t{8} << 20U;

// The C library has noted the limit that the program was started with.
void raiseForThreads(std::size_t bytes) {
  pthread_attr_t usual;
  if (::pthread_getattr_default_np(&usual) != 0) return;
  if (::pthread_attr_setstacksize(&usual, bytes) == 0) ::pthread_setattr_default_np(&usual);
  ::pthread_attr_destroy(&usual);
}

}  // namespace

bool makeRoomOnStack() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur >= kNeeded) return true;
  limit.rlim_cur = std::min(limit.rlim_max, kUsual);
  if (limit.rlim_cur < kNeeded || ::setrlimit(RLIMIT_STACK, &limit) != 0) return false;
  raiseForThreads(limit.rlim_cur);
  return true;
}
