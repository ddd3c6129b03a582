#include "batch/collect/input_state.h"

#include <optional>
#include <utility>

#include "batch/state/input_lock.h"

namespace batch {

namespace {

// Nothing for an input without a result, also for one with a packed result that is done once more.
std::optional<Result> resultOf(const Results& results, const BatchInput& input, const std::string& settings,
                               const std::string& log) {
  std::optional<Result> result = results.newest(input, [&](const Result& found) {
    return found.record.input == input.path && (settings.empty() || found.record.settings == settings);
  });
  if (result && result->isPacked() && isLocked(log)) result.reset();
  return result;
}

InputState stateOf(const std::optional<Result>& result, const std::string& log) {
  if (!result) return {isLocked(log) ? InputStatus::running : InputStatus::missing, "", "", 0};
  const Record& record = result->record;
  if (record.isDone) return {InputStatus::done, "", "", record.seconds};
  return {InputStatus::failed, record.reason, record.detail, record.seconds};
}

std::string logOf(const BatchDirectory& directory, const BatchInput& input) {
  return directory.directoryOf(input) + "/" + kLogName;
}

}  // namespace

const char* nameOf(InputStatus status) {
  switch (status) {
    case InputStatus::done:
      return "done";
    case InputStatus::failed:
      return "failed";
    case InputStatus::running:
      return "running";
    default:
      return "missing";
  }
}

InputState stateOf(const BatchDirectory& directory, const Results& results, const BatchInput& input,
                   const std::string& settings) {
  const std::string log = logOf(directory, input);
  return stateOf(resultOf(results, input, settings, log), log);
}

InputState stateWithParams(const BatchDirectory& directory, const Results& results, const BatchInput& input,
                           const std::string& settings, std::string& params) {
  const std::string log = logOf(directory, input);
  const std::optional<Result> result = resultOf(results, input, settings, log);
  const InputState state = stateOf(result, log);
  params.clear();
  if (state.status != InputStatus::done) return state;
  std::optional<std::string> text = result->params();
  if (!text) return {};
  params = std::move(*text);
  return state;
}

}  // namespace batch
