#include "importers/calculix/steps/frames.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "importers/calculix/steps/rounded.h"

namespace importers::calculix {

namespace {

// Four decimals where they show the value, significant digits where they would not.
std::string timeText(double time) {
  return time == 0.0 || std::abs(time) >= 1e-3 ? fmt::format("{:.4f}", time) : fmt::format("{:.5g}", time);
}

bool isFrequency(FrameKind kind) { return kind == FrameKind::mode || kind == FrameKind::steadyState; }

std::string placeText(const RunFrame& frame) {
  return fmt::format("step {}, {} {:.6g}", frame.step,
                     frame.kind == FrameKind::time ? "time"
                     : isFrequency(frame.kind)     ? "frequency"
                                                   : "buckling factor",
                     frame.value);
}

std::string descriptionOf(const RunFrame& frame) {
  const int number = frame.info.incrementNumber;
  const int mode = frame.mode > 0 ? frame.mode : number;
  std::string text;
  switch (frame.kind) {
    case FrameKind::time:
      return fmt::format("Increment {}: Step Time = {}", number, timeText(frame.info.value));
    case FrameKind::baseState:
      return "Base State";
    case FrameKind::steadyState:
      return fmt::format("Increment {}: Frequency = {:.5g}", number, frame.value);
    case FrameKind::bucklingMode:
      return fmt::format("Mode {}: Buckling Factor = {:.5g}", mode, frame.value);
    case FrameKind::mode:
      text = fmt::format("Mode {}: Frequency = {:.5g}", mode, frame.value);
  }
  return frame.nodalDiameter ? text + fmt::format(", Nodal Diameter = {}", *frame.nodalDiameter) : text;
}

bool saysTheSame(const RunFrame& frame, const IncrementTime& time) {
  return time.increment == frame.increment &&
         rounded(time.total, kDigitsOfStatus).meets(rounded(frame.value, frame.digits));
}

// Whether a frame comes after one that the result file lacks.
bool isBehind(const RunFrame& frame, const RunFrame& added) {
  // Times of the next period are smaller again.
  if (added.isPeriodic) return false;
  if (added.kind == FrameKind::baseState || frame.kind == FrameKind::baseState) {
    return added.kind == FrameKind::baseState;
  }
  if (added.kind == FrameKind::mode || added.kind == FrameKind::bucklingMode) return frame.place > added.place;
  const bool isCounted = added.kind == FrameKind::time && added.increment && frame.increment;
  return isCounted && *frame.increment != *added.increment ? *frame.increment > *added.increment
                                                           : frame.value > added.value;
}

}  // namespace

FrameKind frameKindOf(const FrdResult& block) {
  if (block.kind == AnalysisKind::buckling) return FrameKind::bucklingMode;
  // Complex modes are of no analysis of their own.
  const bool isComplexMode = block.kind == AnalysisKind::other && block.mode > 0;
  if (block.kind == AnalysisKind::modal || isComplexMode) return FrameKind::mode;
  // All frames of steady-state dynamics have the increment 0, which no increment in time has.
  const bool isSteadyState = block.kind == AnalysisKind::time && block.increment == 0 && !block.isPeriodic;
  return isSteadyState ? FrameKind::steadyState : FrameKind::time;
}

std::vector<int> placesInSteps(const Frames& frames) {
  std::vector<int> places(frames.size());
  for (const auto& [step, order] : frames.steps()) {
    for (std::size_t place = 0; place < order.size(); ++place) places[order[place]] = static_cast<int>(place);
  }
  return places;
}

FrameNumber Frames::find(const FrdResult& block, const std::vector<std::string>& fields) {
  const std::pair<int, int> counter{block.step, block.frameCounter};
  auto known = byCounter_.find(counter);
  const auto hasOne = [&](const std::set<std::string>& names) {
    return std::any_of(fields.begin(), fields.end(), [&](const std::string& name) { return names.contains(name); });
  };
  if (known == byCounter_.end() || hasOne(frames_[known->second].fields)) {
    std::vector<FrameNumber>& order = order_[block.step];
    RunFrame frame;
    frame.step = block.step;
    frame.kind = frameKindOf(block);
    frame.value = block.value;
    frame.digits = digitsOfResults(block.value);
    if (!block.isPeriodic) frame.increment = block.increment;
    frame.mode = block.mode;
    frame.nodalDiameter = block.nodalDiameter;
    frame.isPeriodic = block.isPeriodic;
    if (frame.kind == FrameKind::bucklingMode && order.empty() && frame.value == 0.0) {
      frame.kind = FrameKind::baseState;
    } else if (frame.mode > 0) {
      // The file leaves out modes that are the other half of a pair, but counts them.
      const auto first = firstMode_.try_emplace(block.step, block.frameCounter, block.mode).first->second;
      frame.place = block.frameCounter - first.first + first.second;
    } else {
      frame.place = order.empty() ? 1 : frames_[order.back()].place + 1;
    }
    lastPlace_ = placeText(frame);
    order.push_back(frames_.size());
    known = byCounter_.insert_or_assign(counter, frames_.size()).first;
    frames_.push_back(std::move(frame));
  }
  frames_[known->second].fields.insert(fields.begin(), fields.end());
  return known->second;
}

FrameNumber Frames::add(const RunFrame& frame) {
  added_.push_back(frames_.size());
  frames_.push_back(frame);
  return added_.back();
}

void Frames::checkStatus() {
  for (const RunFrame& frame : frames_) {
    const auto times = times_.find(frame.step);
    if (frame.kind != FrameKind::time || times == times_.end()) continue;
    const auto isIt = [&](const IncrementTime& time) { return time.increment == frame.increment; };
    const auto agrees = [&](const IncrementTime& time) { return saysTheSame(frame, time); };
    const bool isKnown = std::any_of(times->second.begin(), times->second.end(), isIt);
    if (isKnown && std::none_of(times->second.begin(), times->second.end(), agrees)) return dropStatus();
  }
}

// The deck knows it exactly, the status file with six digits; else a step starts where those before it ended. Modes,
// buckling factors and steady states take no time.
double Frames::startOf(int step, const StepSpans& spans) const {
  if (const auto known = spans.find(step); known != spans.end()) return known->second.start;
  if (const auto times = times_.find(step); times != times_.end()) {
    const IncrementTime& first = times->second.front();
    return difference(first.total, first.step, kDigitsOfStatus);
  }
  double start = 0.0;
  for (const RunFrame& frame : frames_) {
    if (frame.step < step && frame.kind == FrameKind::time) start = std::max(start, frame.value);
  }
  for (const auto& [number, times] : times_) {
    if (number < step) start = std::max(start, times.back().total);
  }
  return start;
}

// The status file has the time in the step with six digits. The difference of the total times is used only where it
// has more of them, and the same ones.
double Frames::timeInStep(const RunFrame& frame, double start) const {
  if (frame.isPeriodic) return frame.value;
  const double time = difference(frame.value, start, frame.digits);
  const auto times = times_.find(frame.step);
  if (times == times_.end()) return time;
  for (const IncrementTime& status : times->second) {
    if (saysTheSame(frame, status)) return withDigits(time, kDigitsOfStatus) == status.step ? time : status.step;
  }
  return time;
}

void Frames::order(FrameNumber number) {
  std::vector<FrameNumber>& frames = order_[frames_[number].step];
  const auto place = std::find_if(frames.begin(), frames.end(),
                                  [&](FrameNumber other) { return isBehind(frames_[other], frames_[number]); });
  frames.insert(place, number);
}

void Frames::numberStep(const std::vector<FrameNumber>& frames, const WarningSink& note) {
  std::set<int> numbers;
  int last = 0;
  for (const FrameNumber number : frames) {
    RunFrame& frame = frames_[number];
    const int known = frame.kind == FrameKind::baseState     ? 0
                      : frame.kind == FrameKind::steadyState ? last + 1
                      : frame.kind != FrameKind::time        ? frame.place
                                                             : frame.increment.value_or(last + 1);
    last = frame.info.incrementNumber = known;
    numbers.insert(known);
  }
  if (numbers.size() == frames.size()) return;
  for (std::size_t i = 0; i < frames.size(); ++i) frames_[frames[i]].info.incrementNumber = static_cast<int>(i) + 1;
  note(base::note({}, fmt::format("step {} has frames with equal numbers; they are numbered from 1",
                                  frames_[frames.front()].step)));
}

void Frames::setTimes(const std::vector<FrameNumber>& frames, const StepSpans& spans) {
  const int step = frames_[frames.front()].step;
  const double start = startOf(step, spans);
  for (const FrameNumber number : frames) {
    RunFrame& frame = frames_[number];
    frame.info.value = frame.kind == FrameKind::time        ? timeInStep(frame, start)
                       : frame.kind == FrameKind::baseState ? 0.0
                                                            : frame.value;
  }
  // The deck knows the end of a step better than the digits of a total time do.
  const auto span = spans.find(step);
  RunFrame& last = frames_[frames.back()];
  if (span == spans.end() || !span->second.period || times_.contains(step) || last.kind != FrameKind::time) return;
  const double period = *span->second.period;
  if (rounded(last.value, last.digits).contains(start + period)) last.info.value = period;
}

void Frames::settle(const StepSpans& spans, const WarningSink& note) {
  for (const FrameNumber frame : added_) order(frame);
  added_.clear();
  for (const auto& [step, frames] : order_) {
    numberStep(frames, note);
    setTimes(frames, spans);
    for (const FrameNumber frame : frames) frames_[frame].info.description = descriptionOf(frames_[frame]);
  }
}

}  // namespace importers::calculix
