// The state of an input of a batch, for commands that only read.
#pragma once

#include <string>

#include "batch/packs/results.h"
#include "batch/state/batch_directory.h"

namespace batch {

enum class InputStatus {
  done,
  failed,
  running,
  missing  // not begun, done with other settings, or incomplete
};

struct InputState {
  InputStatus status = InputStatus::missing;
  std::string reason;  // of a failure
  std::string detail;
  double seconds = 0;
};

// "done", "failed", ...
const char* nameOf(InputStatus status);

// What the newest record says; params.txt is not looked at. A record that is not of `settings` (empty: of any) does not
// count. Whether the input itself has changed since is not asked: it may be gone when its results are wanted.
InputState stateOf(const BatchDirectory& directory, const Results& results, const BatchInput& input,
                   const std::string& settings);

// The same, and the whole of params.txt where it is done. One that is not what the record speaks of is missing.
InputState stateWithParams(const BatchDirectory& directory, const Results& results, const BatchInput& input,
                           const std::string& settings, std::string& params);

}  // namespace batch
