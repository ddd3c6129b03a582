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

// All frames of steady-state dynamics have the increment 0, which no increment in time has.
bool isSteadyStateDynamics(const FrdResult& block) { return block.kind == AnalysisKind::time && block.increment == 0; }

bool advancesInTime(const FrdResult& block) {
  return block.kind != AnalysisKind::modal && block.kind != AnalysisKind::buckling && !isSteadyStateDynamics(block);
}

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

}  // namespace

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

Frames::Step& Frames::stepOf(const FrdResult& block) {
  const auto [known, isNew] = steps_.emplace(block.step, Step{});
  Step& step = known->second;
  if (!isNew) return step;
  step.start = startOf(block.step);
  step.end = step.start;
  return step;
}

odbstore::StepId Frames::writeStep(int number, Step& step) {
  if (step.id) return *step.id;
  odbstore::StepInfo info;
  const auto place = static_cast<std::size_t>(number) - 1;
  if (number > 0 && place < stepTitles_.size()) info.description = stepTitles_[place];
  if (mass_) {
    info.mass = mass_->mass;
    info.massCenter.assign(mass_->centre.begin(), mass_->centre.end());
    info.inertiaAboutCenter.assign(mass_->inertiaAboutCentre.begin(), mass_->inertiaAboutCentre.end());
    info.inertiaAboutOrigin.assign(mass_->inertiaAboutOrigin.begin(), mass_->inertiaAboutOrigin.end());
  }
  step.id = writer_->addStep(fmt::format("Step-{}", number), info);
  ++stepCount_;
  return *step.id;
}

double Frames::timeInStep(const FrdResult& block, Step& step) {
  const auto known = times_.find({block.step, block.increment});
  if (known == times_.end()) return difference(block.value, step.start);
  const auto status = std::find_if(known->second.begin(), known->second.end(),
                                   [&](const IncrementTime& time) { return agree(block.value, time.total); });
  if (status == known->second.end()) {
    warn_(statusPath_ + ": warning: its times are not those of the results, and are not used");
    times_.clear();
    step.start = startOf(block.step);
    return difference(block.value, step.start);
  }
  // Where both say the same, the total times do it with more digits.
  const double time = difference(block.value, step.start);
  return agree(time, status->step) ? time : status->step;
}

odbstore::FrameInfo Frames::describe(const FrdResult& block, Step& step) {
  if (advancesInTime(block)) {
    step.end = std::max(step.end, block.value);
    const double time = timeInStep(block, step);
    return {block.increment, time, fmt::format("Increment {}: Step Time = {}", block.increment, timeText(time))};
  }
  if (block.kind == AnalysisKind::buckling && step.numbered == 0 && block.value == 0.0) return {0, 0.0, "Base State"};
  const int number = ++step.numbered;
  std::string description;
  if (block.kind == AnalysisKind::buckling) {
    description = fmt::format("Mode {}: Buckling Factor = {:.5g}", number, block.value);
  } else if (block.kind == AnalysisKind::modal) {
    description = fmt::format("Mode {}: Frequency = {:.5g}", number, block.value);
  } else {
    description = fmt::format("Increment {}: Frequency = {:.5g}", number, block.value);
  }
  if (block.nodalDiameter) description += fmt::format(", Nodal Diameter = {}", *block.nodalDiameter);
  return {number, block.value, description};
}

Frames::Frame& Frames::find(const FrdResult& block, const std::vector<std::string>& fields) {
  Step& step = stepOf(block);
  const std::pair<int, int> place{block.step, block.frameCounter};
  auto frame = frames_.find(place);
  const auto hasOne = [&](const std::set<std::string>& names) {
    return std::any_of(fields.begin(), fields.end(), [&](const std::string& name) { return names.contains(name); });
  };
  if (frame == frames_.end() || hasOne(frame->second.fields)) {
    const odbstore::FrameInfo info = describe(block, step);
    frame = frames_.insert_or_assign(place, Frame{step.frames++, info, {}, {}}).first;
    lastPlace_ = fmt::format("step {}, {} {:.6g}", block.step,
                             advancesInTime(block)                  ? "time"
                             : block.kind == AnalysisKind::buckling ? "buckling factor"
                                                                    : "frequency",
                             block.value);
  }
  frame->second.fields.insert(fields.begin(), fields.end());
  return frame->second;
}

odbstore::FrameId Frames::write(const FrdResult& block, const std::vector<std::string>& fields) {
  Frame& frame = find(block, fields);
  if (!frame.id) {
    frame.id = writer_->addFrame(writeStep(block.step, steps_.at(block.step)), frame.info);
    ++frameCount_;
  }
  return *frame.id;
}

}  // namespace importers::calculix
