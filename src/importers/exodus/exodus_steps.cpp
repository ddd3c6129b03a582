#include "importers/exodus/exodus_steps.h"

#include <fmt/format.h>

namespace importers::exodus {

std::vector<StepRecords> stepsOf(std::span<const double> times) {
  std::vector<StepRecords> steps;
  for (std::size_t record = 0; record < times.size(); ++record) {
    if (record == 0 || times[record] < times[record - 1]) steps.push_back({record, 0});
    ++steps.back().count;
  }
  return steps;
}

std::vector<OutlineStep> outlineSteps(std::span<const StepRecords> steps, std::span<const double> times,
                                      const std::string& description) {
  std::vector<OutlineStep> outline;
  for (const StepRecords& records : steps) {
    OutlineStep& step = outline.emplace_back();
    step.number = static_cast<int>(outline.size());
    step.name = fmt::format("Step-{}", step.number);
    step.info.description = description;
    for (std::size_t i = 0; i < records.count; ++i) {
      const double time = times[records.first + i];
      const int number = static_cast<int>(i + 1);
      step.frames.push_back({number, time, fmt::format("Increment {}: Step Time = {:.6g}", number, time)});
    }
  }
  return outline;
}

}  // namespace importers::exodus
