#include "batch/collect/batch_counts.h"

#include "batch/collect/input_state.h"

namespace batch {

BatchCounts countInputs(const BatchDirectory& directory) {
  BatchCounts counts;
  const std::string settings = directory.lastSettings();
  const Results results(directory);
  for (const BatchInput& input : directory.inputs()) {
    const InputState state = stateOf(directory, results, input, settings);
    ++counts.inputs;
    if (state.status == InputStatus::done) ++counts.done;
    if (state.status == InputStatus::running) ++counts.running;
    if (state.status == InputStatus::missing) ++counts.missing;
    if (state.status != InputStatus::failed) continue;
    ++counts.failed;
    ++counts.why[state.reason];
  }
  return counts;
}

}  // namespace batch
