// A run's wait for its pack.
#pragma once

#include <functional>

#include "batch/packs/pack_writer.h"
#include "batch/run/signals.h"

namespace batch {

// Claims the pack, which may take until the run that has it ends; `wait` is called once if there is one. False if an
// interruption comes first. Throws base::FileError.
bool claimPatiently(PackWriter& pack, Signals& signals, const std::function<void()>& wait);

}  // namespace batch
