#include "batch/collect/input_state.h"

#include <limits>
#include <optional>

#include "batch/state/completion_record.h"
#include "batch/state/input_lock.h"
#include "batch/state/small_files.h"

namespace batch {

namespace {

std::optional<Record> recordOf(const BatchInput& input, const std::string& directory, const std::string& settings) {
  std::optional<Record> record = readRecord(directory);
  if (!record || record->input != input.path) return std::nullopt;
  if (!settings.empty() && record->settings != settings) return std::nullopt;
  return record;
}

InputState stateOf(const std::optional<Record>& record, const std::string& directory) {
  if (!record) {
    const bool isRunning = isLocked(directory + "/" + kLogName);
    return {isRunning ? InputStatus::running : InputStatus::missing, "", "", 0};
  }
  if (record->isDone) return {InputStatus::done, "", "", record->seconds};
  return {InputStatus::failed, record->reason, record->detail, record->seconds};
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

InputState stateOf(const BatchDirectory& directory, const BatchInput& input, const std::string& settings) {
  const std::string place = directory.directoryOf(input);
  return stateOf(recordOf(input, place, settings), place);
}

InputState stateWithParams(const BatchDirectory& directory, const BatchInput& input, const std::string& settings,
                           std::string& params) {
  const std::string place = directory.directoryOf(input);
  const std::optional<Record> record = recordOf(input, place, settings);
  const InputState state = stateOf(record, place);
  params.clear();
  if (state.status != InputStatus::done) return state;
  std::optional<std::string> text = readSmallFile(place + "/" + kParamsName, std::numeric_limits<std::size_t>::max());
  if (!text || sumOfText(*text) != record->params) return {};
  params = std::move(*text);
  return state;
}

}  // namespace batch
