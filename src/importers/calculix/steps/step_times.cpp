#include "importers/calculix/steps/step_times.h"

#include <filesystem>
#include <optional>
#include <vector>

#include "importers/input/line_reader.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

std::vector<std::string_view> words(std::string_view line) {
  std::vector<std::string_view> found;
  for (line = trimmed(line); !line.empty(); line = trimmed(line)) {
    const std::size_t end = std::min(line.find(' '), line.size());
    found.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
  return found;
}

}  // namespace

StepTimes readStepTimes(const std::string& path) {
  StepTimes times;
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return times;
  LineReader lines(path);
  std::string_view line;
  while (lines.next(line)) {
    // STEP INC ATT ITRS TOT_TIME STEP_TIME INC_TIME; an attempt that failed carries a letter.
    const std::vector<std::string_view> columns = words(line);
    if (columns.size() < 7) continue;
    const std::optional<int> step = integerFrom(columns[0]);
    const std::optional<int> increment = integerFrom(columns[1]);
    const std::optional<int> attempt = integerFrom(columns[2]);
    const std::optional<double> total = numberFrom(columns[4]);
    const std::optional<double> inStep = numberFrom(columns[5]);
    if (step && increment && attempt && total && inStep) times[*step].push_back({*increment, *total, *inStep});
  }
  return times;
}

}  // namespace importers::calculix
