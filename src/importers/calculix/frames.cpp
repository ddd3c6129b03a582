#include "importers/calculix/frames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

// Total times come with up to ten digits, those of the status file with six.
constexpr int kDigitsOfTime = 10;
constexpr double kStatusPrecision = 1e-5;

// Four decimals where they show the value, significant digits where they would not.
std::string timeText(double time) {
  return time == 0.0 || std::abs(time) >= 1e-3 ? fmt::format("{:.4f}", time) : fmt::format("{:.5g}", time);
}

// What is left of `total` behind `start`, without the digits that the subtraction makes up.
double difference(double total, double start) {
  if (total == 0.0 || !std::isfinite(total)) return total - start;
  const int decimals = kDigitsOfTime - 1 - static_cast<int>(std::floor(std::log10(std::abs(total))));
  return numberFrom(fmt::format("{:.{}f}", total - start, std::max(decimals, 0))).value_or(total - start);
}

bool agree(double time, double status) { return std::abs(time - status) <= kStatusPrecision * std::abs(status); }

std::string placeText(const RunFrame& frame) {
  const bool isFrequency = frame.kind == FrameKind::mode || frame.kind == FrameKind::steadyState;
  return fmt::format("step {}, {} {:.6g}", frame.step,
                     frame.kind == FrameKind::time ? "time"
                     : isFrequency                 ? "frequency"
                                                   : "buckling factor",
                     frame.value);
}

}  // namespace

FrameKind frameKindOf(const FrdResult& block) {
  if (block.kind == AnalysisKind::buckling) return FrameKind::bucklingMode;
  if (block.kind == AnalysisKind::modal) return FrameKind::mode;
  // All frames of steady-state dynamics have the increment 0, which no increment in time has.
  const bool isSteadyState = block.kind == AnalysisKind::time && block.increment == 0;
  return isSteadyState ? FrameKind::steadyState : FrameKind::time;
}

std::vector<int> placesInSteps(const Frames& frames) {
  std::vector<int> places(frames.size());
  for (const auto& [step, order] : frames.steps()) {
    for (std::size_t place = 0; place < order.size(); ++place) places[order[place]] = static_cast<int>(place);
  }
  return places;
}

double Frames::startOf(int step) const {
  const auto first = times_.lower_bound({step, 0});
  if (first != times_.end() && first->first.first == step) {
    const IncrementTime& time = first->second.front();
    return difference(time.total, time.step);
  }
  // Modes, buckling factors and steady-state dynamics take no time.
  double start = 0.0;
  for (const auto& [number, known] : steps_) {
    if (number < step) start = std::max(start, known.end);
  }
  for (const auto& [place, times] : times_) {
    if (place.first < step) start = std::max(start, times.back().total);
  }
  return start;
}

Frames::Step& Frames::stepOf(int number) {
  const auto [known, isNew] = steps_.emplace(number, Step{});
  Step& step = known->second;
  if (!isNew) return step;
  step.start = startOf(number);
  step.end = step.start;
  return step;
}

double Frames::timeInStep(const RunFrame& frame, int increment, Step& step) {
  const auto known = times_.find({frame.step, increment});
  if (known == times_.end()) return difference(frame.value, step.start);
  const auto status = std::find_if(known->second.begin(), known->second.end(),
                                   [&](const IncrementTime& time) { return agree(frame.value, time.total); });
  if (status == known->second.end()) {
    (*warn_)(statusPath_ + ": warning: its times are not those of the results, and are not used");
    times_.clear();
    step.start = startOf(frame.step);
    return difference(frame.value, step.start);
  }
  // Where both say the same, the total times do it with more digits.
  const double time = difference(frame.value, step.start);
  return agree(time, status->step) ? time : status->step;
}

void Frames::describeTime(RunFrame& frame, int increment, Step& step) {
  step.end = std::max(step.end, frame.value);
  const double time = timeInStep(frame, increment, step);
  frame.info = {increment, time, fmt::format("Increment {}: Step Time = {}", increment, timeText(time))};
}

void Frames::describe(RunFrame& frame, int increment) {
  Step& step = stepOf(frame.step);
  if (frame.kind == FrameKind::time) {
    describeTime(frame, increment, step);
    return;
  }
  if (frame.kind == FrameKind::bucklingMode && step.numbered == 0 && frame.value == 0.0) {
    frame.kind = FrameKind::baseState;
  }
  if (frame.kind == FrameKind::baseState) {
    frame.info = {0, 0.0, "Base State"};
    return;
  }
  const int number = ++step.numbered;
  const char* const what = frame.kind == FrameKind::bucklingMode ? "Mode {}: Buckling Factor = {:.5g}"
                           : frame.kind == FrameKind::mode       ? "Mode {}: Frequency = {:.5g}"
                                                                 : "Increment {}: Frequency = {:.5g}";
  frame.info = {number, frame.value, fmt::format(fmt::runtime(what), number, frame.value)};
  if (frame.nodalDiameter) frame.info.description += fmt::format(", Nodal Diameter = {}", *frame.nodalDiameter);
}

FrameNumber Frames::find(const FrdResult& block, const std::vector<std::string>& fields) {
  const std::pair<int, int> counter{block.step, block.frameCounter};
  auto known = byCounter_.find(counter);
  const auto hasOne = [&](const std::set<std::string>& names) {
    return std::any_of(fields.begin(), fields.end(), [&](const std::string& name) { return names.contains(name); });
  };
  if (known == byCounter_.end() || hasOne(frames_[known->second].fields)) {
    RunFrame frame{block.step, frameKindOf(block), block.value, block.nodalDiameter, {}, {}};
    describe(frame, block.increment);
    lastPlace_ = placeText(frame);
    order_[block.step].push_back(frames_.size());
    known = byCounter_.insert_or_assign(counter, frames_.size()).first;
    frames_.push_back(std::move(frame));
  }
  frames_[known->second].fields.insert(fields.begin(), fields.end());
  return known->second;
}

FrameNumber Frames::insert(int step, FrameKind kind, int increment, double value) {
  RunFrame frame{step, kind, value, {}, {}, {}};
  std::vector<FrameNumber>& order = order_[step];
  const auto isLater = [&](FrameNumber other) {
    return kind == FrameKind::mode || kind == FrameKind::bucklingMode ? frames_[other].info.incrementNumber > increment
           : kind == FrameKind::baseState                             ? true
                                                                      : frames_[other].value > value;
  };
  const auto place = std::find_if(order.begin(), order.end(), isLater);
  if (kind == FrameKind::time && increment == 0) {
    increment = place == order.begin() ? 1 : frames_[*(place - 1)].info.incrementNumber + 1;
  }
  if (kind == FrameKind::mode || kind == FrameKind::bucklingMode) stepOf(step).numbered = increment - 1;
  describe(frame, increment);
  order.insert(place, frames_.size());
  frames_.push_back(std::move(frame));
  return frames_.size() - 1;
}

void Frames::settleTimes() {
  for (auto& [number, step] : steps_) {
    step.start = startOf(number);
    for (const FrameNumber frame : order_[number]) {
      if (frames_[frame].kind == FrameKind::time)
        describeTime(frames_[frame], frames_[frame].info.incrementNumber, step);
    }
  }
}

}  // namespace importers::calculix
