#include "batch/run/pack_claim.h"

#include <poll.h>

namespace batch {

bool claimPatiently(PackWriter& pack, Signals& signals, const std::function<void()>& wait) {
  constexpr int kMilliseconds = 250;
  if (pack.claim()) return true;
  wait();
  while (!pack.claim()) {
    pollfd readable{signals.file(), POLLIN, 0};
    if (::poll(&readable, 1, kMilliseconds) > 0 && signals.takeInterruption()) return false;
  }
  return true;
}

}  // namespace batch
