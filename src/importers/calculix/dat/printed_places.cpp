#include "importers/calculix/dat/printed_places.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>

#include "importers/calculix/dat/increment_matching.h"
#include "importers/calculix/dat/printed_outputs.h"

namespace importers::calculix {

namespace {

class PlaceFinder {
 public:
  PlaceFinder(std::span<const PrintedTable> tables, const RunSteps& steps, const Frames& frames, bool isComplete)
      : tables_(tables), steps_(steps), frames_(frames), plans_(steps), isComplete_(isComplete) {
    places_.tables.resize(tables.size());
  }

  PrintedPlaces find() {
    const PrintedOutputs found = findOutputs(tables_, steps_, plans_);
    if (found.misfit) {
      contradict(tables_[*found.misfit].head.line,
                 fmt::format("the run has no further step for {}", tables_[*found.misfit].head.title));
    }
    for (std::size_t i = 0; i < tables_.size(); ++i) {
      places_.tables[i] = {found.steps[i], {}, found.areImaginary[i], found.parts[i]};
    }
    // Times that follow each other are matched together: the modes between them say which steps they cannot be of.
    for (std::size_t i = 0; i < found.outputs.size() && places_.contradiction.empty();) {
      std::size_t end = i;
      while (end < found.outputs.size() && isTimeBeside(found.outputs[end], found.outputs[i])) ++end;
      if (end == i) {
        placeOther(found.outputs[i++]);
      } else {
        placeTimes(std::span(found.outputs).subspan(i, end - i));
        i = end;
      }
    }
    if (isComplete_ && places_.contradiction.empty()) checkFrames(found);
    return std::move(places_);
  }

 private:
  static bool isTimeBeside(const PrintedOutput& output, const PrintedOutput& first) {
    return output.kind == FrameKind::time && output.after == first.after && output.before == first.before;
  }

  void contradict(std::int64_t line, std::string why) {
    places_.contradiction = std::move(why);
    places_.contradictionLine = line;
  }

  void give(const PrintedOutput& output, int step, FrameNumber frame) {
    withTables_.insert(frame);
    for (const std::size_t table : output.tables) {
      places_.tables[table].step = step;
      places_.tables[table].frame = frame;
    }
  }

  FrameNumber add(RunFrame frame) {
    frame.digits = kDigitsOfTables;
    places_.frames.push_back(std::move(frame));
    return frames_.size() + places_.frames.size() - 1;
  }

  // Modes, factors and frequencies know their step.
  void placeOther(const PrintedOutput& output) {
    if (output.tables.empty()) return;
    const auto order = frames_.steps().find(output.step);
    if (order != frames_.steps().end()) {
      for (const FrameNumber number : order->second) {
        if (!isOf(output, frames_[number])) continue;
        if (!agrees(output, frames_[number])) return contradictMode(output, frames_[number]);
        return give(output, output.step, number);
      }
    }
    RunFrame frame;
    frame.step = output.step;
    frame.kind = output.kind;
    frame.value = output.value;
    frame.mode = output.mode;
    frame.place = output.place;
    frame.nodalDiameter = output.nodalDiameter;
    give(output, output.step, add(std::move(frame)));
  }

  static bool isOf(const PrintedOutput& output, const RunFrame& frame) {
    if (frame.kind != output.kind) return false;
    if (frame.kind == FrameKind::baseState) return true;
    if (frame.kind == FrameKind::steadyState) {
      return rounded(frame.value, frame.digits).meets(rounded(output.value, kDigitsOfTables));
    }
    // Buckling factors have no numbers in the result file.
    const int number = frame.mode > 0 ? frame.mode : frame.place;
    return frame.nodalDiameter == output.nodalDiameter && number == output.mode;
  }

  // Results and tables round the same number.
  static bool agrees(const PrintedOutput& output, const RunFrame& frame) {
    const bool isListed = output.kind == FrameKind::mode && output.value != 0.0;
    return !isListed || rounded(frame.value, frame.digits).meets(rounded(output.value, kDigitsOfTables));
  }

  void contradictMode(const PrintedOutput& output, const RunFrame& frame) {
    contradict(output.line, fmt::format("mode {} of step {} has the frequency {:.7g}, in the results {:.7g}",
                                        output.mode, output.step, output.value, frame.value));
  }

  // The steps in time between those that come before and after the outputs.
  std::vector<StepInTime> stepsFor(const PrintedOutput& first) const {
    std::vector<StepInTime> found;
    for (auto step = steps_.steps.upper_bound(first.after); step != steps_.steps.end(); ++step) {
      if (first.before && step->first >= *first.before) break;
      if (step->second.isInTime()) found.push_back({step->first, &step->second});
    }
    return found;
  }

  std::vector<bool> askedBy(const PrintedOutput& output, const std::vector<StepInTime>& steps) const {
    std::vector<bool> asked;
    for (const StepInTime& step : steps) {
      if (output.plans.empty()) break;
      const int plan = plans_.of(step.number);
      asked.push_back(std::find(output.plans.begin(), output.plans.end(), plan) != output.plans.end());
    }
    return asked;
  }

  void placeTimes(std::span<const PrintedOutput> outputs) {
    const std::vector<StepInTime> steps = stepsFor(outputs.front());
    std::vector<PrintedTime> times;
    for (const PrintedOutput& output : outputs) {
      times.push_back({rounded(output.value, kDigitsOfTables), askedBy(output, steps)});
    }
    const auto matches = matchTimes(times, steps, !steps_.isWhole && !outputs.front().before);
    if (!matches) {
      return contradict(outputs.front().line, "the times of the tables are not those of the steps");
    }
    for (std::size_t i = 0; i < outputs.size(); ++i) placeTime(outputs[i], (*matches)[i]);
  }

  void placeTime(const PrintedOutput& output, const TimeMatch& match) {
    RunFrame frame;
    frame.step = match.step;
    frame.value = output.value;
    const RunStep* const step = steps_.find(match.step);
    frame.isPeriodic = step != nullptr && step->deck != nullptr && step->deck->isPeriodic;
    if (!match.isCertain) noteDoubt(output, match.step);
    if (match.increment) {
      const KnownIncrement& known = step->increments[*match.increment];
      if (known.frame) return give(output, match.step, *known.frame);
      frame.increment = known.number;
    }
    give(output, match.step, add(std::move(frame)));
  }

  // The solver prints after the same increments after which it writes frames. Where it asks for both, and no frame at
  // all has tables, they are of different runs.
  void checkFrames(const PrintedOutputs& found) {
    std::set<int> printed;
    for (const PrintedOutput& output : found.outputs) printed.insert(output.plans.begin(), output.plans.end());
    std::size_t lacking = 0;
    for (const auto& [number, step] : steps_.steps) {
      if (!printed.contains(plans_.of(number))) continue;
      for (const KnownIncrement& known : step.increments) {
        if (!known.frame || !known.isExpected) continue;
        if (withTables_.contains(*known.frame)) return;
        ++lacking;
      }
    }
    if (lacking > 0) {
      contradict(tables_.front().head.line, fmt::format("none of {} frames has printed tables", lacking));
    }
  }

  void noteDoubt(const PrintedOutput& output, int step) {
    if (inDoubt_) return;
    inDoubt_ = true;
    places_.problems.push_back(
        {output.line, fmt::format("the printed times have too few digits to distinguish increments of step {}, and "
                                  "nothing else helps: tables may be assigned to a neighbouring increment",
                                  step)});
  }

  std::span<const PrintedTable> tables_;
  const RunSteps& steps_;
  const Frames& frames_;
  PrintPlans plans_;
  bool isComplete_;
  PrintedPlaces places_;
  std::set<FrameNumber> withTables_;
  bool inDoubt_ = false;
};

}  // namespace

PrintedPlaces findPlaces(std::span<const PrintedTable> tables, const RunSteps& steps, const Frames& frames,
                         bool isComplete) {
  return PlaceFinder(tables, steps, frames, isComplete).find();
}

}  // namespace importers::calculix
