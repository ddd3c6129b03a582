#include "importers/calculix/frames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace importers::calculix {

namespace {

// How much a frequency or buckling step adds to the total time, unless its deck says otherwise.
constexpr double kUsualPeriod = 1.0;

bool isSteadyStateDynamics(const FrdResult& block) { return block.kind == AnalysisKind::time && block.increment == 0; }

bool advancesInTime(const FrdResult& block) {
  return block.kind != AnalysisKind::modal && block.kind != AnalysisKind::buckling && !isSteadyStateDynamics(block);
}

// Four decimals where they show the value, significant digits where they would not.
std::string timeText(double time) {
  return time == 0.0 || std::abs(time) >= 1e-3 ? fmt::format("{:.4f}", time) : fmt::format("{:.5g}", time);
}

}  // namespace

double Frames::startOf(int step) const {
  const auto first = times_.lower_bound({step, 0});
  if (first != times_.end() && first->first.first == step) return first->second.total - first->second.step;
  double start = 0.0;
  for (const auto& [number, known] : steps_) {
    if (number < step) start = std::max(start, known.end);
  }
  for (const auto& [place, time] : times_) {
    if (place.first < step) start = std::max(start, time.total);
  }
  return start;
}

Frames::Step& Frames::stepOf(const FrdResult& block) {
  const auto [known, isNew] = steps_.emplace(block.step, Step{});
  Step& step = known->second;
  if (!isNew) return step;
  odbstore::StepInfo info;
  const auto place = static_cast<std::size_t>(block.step) - 1;
  if (block.step > 0 && place < stepTitles_.size()) info.description = stepTitles_[place];
  step.id = writer_.addStep(fmt::format("Step-{}", block.step), info);
  step.start = startOf(block.step);
  step.end = step.start + kUsualPeriod;
  return step;
}

odbstore::FrameInfo Frames::describe(const FrdResult& block, Step& step) {
  ++step.frames;
  if (advancesInTime(block)) {
    step.end = step.frames == 1 ? block.value : std::max(step.end, block.value);
    const auto known = times_.find({block.step, block.increment});
    const double time = known != times_.end() ? known->second.step : block.value - step.start;
    return {block.increment, time, fmt::format("Increment {}: Step Time = {}", block.increment, timeText(time))};
  }
  const char* const what = block.kind == AnalysisKind::buckling ? "Mode {}: Buckling factor = {:.5g}"
                           : block.kind == AnalysisKind::modal  ? "Mode {}: Frequency = {:.5g}"
                                                                : "Increment {}: Frequency = {:.5g}";
  // The first frame of a buckling step is the state that it starts from.
  if (block.kind == AnalysisKind::buckling && step.frames == 1 && block.value == 0.0) {
    step.frames = 0;
    return {0, 0.0, "Base state"};
  }
  return {step.frames, block.value, fmt::format(fmt::runtime(what), step.frames, block.value)};
}

odbstore::FrameId Frames::frameOf(const FrdResult& block, const std::vector<std::string>& fields) {
  Step& step = stepOf(block);
  const std::pair<int, int> place{block.step, block.frameCounter};
  auto frame = frames_.find(place);
  const auto hasOne = [&](const std::set<std::string>& names) {
    return std::any_of(fields.begin(), fields.end(), [&](const std::string& name) { return names.contains(name); });
  };
  if (frame == frames_.end() || hasOne(frame->second.fields)) {
    const odbstore::FrameInfo info = describe(block, step);
    frame = frames_.insert_or_assign(place, Frame{writer_.addFrame(step.id, info), {}}).first;
    ++frameCount_;
    lastPlace_ = fmt::format("step {}, {} {:.6g}", block.step,
                             advancesInTime(block)                  ? "time"
                             : block.kind == AnalysisKind::buckling ? "buckling factor"
                                                                    : "frequency",
                             block.value);
  }
  frame->second.fields.insert(fields.begin(), fields.end());
  return frame->second.id;
}

}  // namespace importers::calculix
