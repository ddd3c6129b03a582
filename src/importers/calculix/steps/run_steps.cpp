#include "importers/calculix/steps/run_steps.h"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

namespace importers::calculix {

namespace {

Procedure procedureOf(FrameKind kind) {
  switch (kind) {
    case FrameKind::mode:
      return Procedure::modes;
    case FrameKind::baseState:
    case FrameKind::bucklingMode:
      return Procedure::buckling;
    case FrameKind::steadyState:
      return Procedure::steadyState;
    case FrameKind::time:
      break;
  }
  return Procedure::time;
}

Rounded shifted(const Rounded& time, double by) { return {time.low + by, time.high + by}; }

// What both say, or the first where they contradict each other.
Rounded both(const Rounded& a, const Rounded& b) {
  return a.meets(b) ? Rounded{std::max(a.low, b.low), std::min(a.high, b.high)} : a;
}

class StepFinder {
 public:
  StepFinder(const Frames& frames, const StepTimes& times, const Deck& deck)
      : frames_(frames), times_(times), deck_(deck) {}

  RunSteps find() {
    findNumbers();
    asks_ = std::any_of(deck_.steps.steps.begin(), deck_.steps.steps.end(),
                        [](const DeckStep& step) { return step.knowsPrints && !step.prints.empty(); });
    if (found_.isWhole) findTimes();
    for (auto& [number, step] : found_.steps) {
      addStatus(number, step);
      addFrames(number, step);
    }
    for (auto& [number, step] : found_.steps) {
      if (step.isInTime()) finish(number, step);
    }
    return std::move(found_);
  }

 private:
  // The lowest and highest number in the status and the result file; 0 for none.
  std::pair<int, int> seen() const {
    std::set<int> numbers;
    for (const auto& [step, times] : times_) numbers.insert(step);
    for (const auto& [step, order] : frames_.steps()) numbers.insert(step);
    return numbers.empty() ? std::pair(0, 0) : std::pair(*numbers.begin(), *numbers.rbegin());
  }

  // All up to the last one, as long as there can be so many.
  std::set<int> numbersTo(int last) const {
    constexpr int kMostSteps = 100'000;
    std::set<int> numbers;
    for (int step = 1; step <= std::min(last, kMostSteps); ++step) numbers.insert(step);
    for (const auto& [step, times] : times_) numbers.insert(step);
    for (const auto& [step, order] : frames_.steps()) numbers.insert(step);
    return numbers;
  }

  void findNumbers() {
    const auto [first, last] = seen();
    const DeckSteps& deck = deck_.steps;
    const int before = deck.stepsBefore.value_or(std::max(first - 1, 0));
    const int count = static_cast<int>(deck.steps.size());
    found_.isWhole = count > 0 && (last == 0 || (first > before && last <= before + count));
    if (count > 0 && !found_.isWhole) {
      found_.doubt =
          fmt::format("the deck has the steps {} to {}, the results {} to {}: the steps of the deck are not used",
                      before + 1, before + count, first, last);
    }
    for (const int step : numbersTo(found_.isWhole ? before + count : last)) {
      RunStep& known = found_.steps[step];
      if (found_.isWhole && step > before && step <= before + count) {
        const auto place = static_cast<std::size_t>(step - before - 1);
        known.deck = &deck.steps[place];
        known.procedure = deck.steps[place].procedure;
      } else if (const auto order = frames_.steps().find(step); order != frames_.steps().end()) {
        known.procedure = procedureOf(frames_[order->second.front()].kind);
      }
    }
  }

  // Steps in time follow each other without gaps; the others take no time.
  void findTimes() {
    std::optional<double> now;
    if (deck_.steps.stepsBefore == 0) now = 0.0;
    for (auto& [number, step] : found_.steps) {
      if (step.deck == nullptr) continue;
      if (step.deck->isPeriodic) {
        step.start = 0.0;
        continue;
      }
      if (step.deck->startsAt) now = step.deck->startsAt;
      step.start = now;
      now = now && step.deck->period ? std::optional(*now + *step.deck->period) : std::nullopt;
      step.end = now;
    }
    const bool isTrue = std::all_of(found_.steps.begin(), found_.steps.end(),
                                    [this](const auto& step) { return isInside(step.first, step.second); });
    if (isTrue) return;
    for (auto& [number, step] : found_.steps) step.start = step.end = std::nullopt;
  }

  // Whether the times of a step that the files know are between those of the deck.
  bool isInside(int number, const RunStep& step) const {
    if (!step.start || !step.end || !step.isInTime()) return true;
    const Rounded deck{*step.start, *step.end};
    if (const auto times = times_.find(number); times != times_.end()) {
      for (const IncrementTime& time : times->second) {
        if (!rounded(time.total, kDigitsOfStatus).meets(deck)) return false;
      }
    }
    const auto order = frames_.steps().find(number);
    return order == frames_.steps().end() ||
           std::all_of(order->second.begin(), order->second.end(), [&](FrameNumber number) {
             const RunFrame& frame = frames_[number];
             return frame.kind != FrameKind::time || rounded(frame.value, frame.digits).meets(deck);
           });
  }

  void addStatus(int number, RunStep& step) {
    const auto times = times_.find(number);
    if (times == times_.end() || (step.deck != nullptr && step.deck->isFluid)) return;
    step.knowsAll = true;
    const IncrementTime* last = nullptr;
    for (const IncrementTime& time : times->second) {
      const bool isSecondLine = last != nullptr && step.deck != nullptr && step.deck->isUncoupled &&
                                last->increment == time.increment && last->step == time.step;
      last = isSecondLine ? nullptr : &time;
      if (isSecondLine) continue;
      KnownIncrement known{
          time.increment, rounded(time.total, kDigitsOfStatus), rounded(time.step, kDigitsOfStatus), {}, true};
      if (step.start) known.total = both(known.total, shifted(known.inStep, *step.start));
      step.increments.push_back(known);
    }
  }

  void addFrames(int number, RunStep& step) {
    const auto order = frames_.steps().find(number);
    if (order == frames_.steps().end()) return;
    for (const FrameNumber place : order->second) {
      const RunFrame& frame = frames_[place];
      if (frame.nodalDiameter) step.diameters.insert(*frame.nodalDiameter);
      if (frame.kind == FrameKind::time) addFrame(place, step);
    }
  }

  void addFrame(FrameNumber place, RunStep& step) {
    const RunFrame& frame = frames_[place];
    const Rounded total = rounded(frame.value, frame.digits);
    step.hasFrames = true;
    std::vector<KnownIncrement>& known = step.increments;
    const auto same = std::find_if(known.begin(), known.end(), [&](const KnownIncrement& increment) {
      return !increment.frame && increment.number == frame.increment && increment.total.meets(total);
    });
    if (same != known.end()) {
      same->total = both(total, same->total);
      same->frame = place;
      found_.confirmsStatus = true;
      return;
    }
    const auto later = std::find_if(known.begin(), known.end(),
                                    [&](const KnownIncrement& increment) { return increment.total.low > total.high; });
    known.insert(later, {frame.increment, total, shifted(total, -step.start.value_or(0.0)), place, true});
  }

  void finish(int number, RunStep& step) {
    const bool isEnded = step.end && !step.increments.empty() && step.increments.back().total.contains(*step.end);
    found_.confirmsStatus = found_.confirmsStatus || (isEnded && times_.contains(number));
    const bool isFollowed = times_.upper_bound(number) != times_.end();
    step.mayGoOn = !isEnded && !(step.knowsAll && isFollowed);
    if (step.end && *step.end != *step.start && !isEnded && step.mayGoOn) {
      step.increments.push_back({std::nullopt, {*step.end, *step.end}, {}, {}, true});
      step.mayGoOn = false;
      // What the status file has not is between its last increment and the end.
      step.knowsAll = false;
    }
    setExpected(step);
  }

  // The solver writes the result file and the tables after the same increments.
  void setExpected(RunStep& step) const {
    const bool prints = !asks_ || step.deck == nullptr || !step.deck->prints.empty();
    for (std::size_t i = 0; i < step.increments.size(); ++i) {
      KnownIncrement& known = step.increments[i];
      const bool isLast = i + 1 == step.increments.size() && !step.mayGoOn;
      bool isWritten = true;
      if (step.hasFrames && known.number) {
        isWritten = known.frame.has_value();
      } else if (step.deck != nullptr && known.number && !isLast) {
        isWritten = isOutput(*step.deck, known);
      }
      known.isExpected = prints && isWritten;
    }
  }

  const Frames& frames_;
  const StepTimes& times_;
  const Deck& deck_;
  bool asks_ = false;  // whether the deck shows what is printed
  RunSteps found_;
};

}  // namespace

const RunStep* RunSteps::find(int step) const {
  const auto known = steps.find(step);
  return known == steps.end() ? nullptr : &known->second;
}

StepSpans RunSteps::spans() const {
  StepSpans known;
  for (const auto& [number, step] : steps) {
    if (step.start && step.isInTime()) known[number] = {*step.start, step.deck->period};
  }
  return known;
}

RunSteps knownSteps(const Frames& frames, const StepTimes& times, const Deck& deck) {
  return StepFinder(frames, times, deck).find();
}

bool isOutput(const DeckStep& step, const KnownIncrement& increment) {
  if (step.timePoints.empty()) return increment.number.value_or(1) % step.frequency == 0;
  const Rounded& time = step.timePointsAreTotal ? increment.total : increment.inStep;
  const auto point = std::lower_bound(step.timePoints.begin(), step.timePoints.end(), time.low);
  return point != step.timePoints.end() && *point <= time.high;
}

}  // namespace importers::calculix
