#include "importers/calculix/printed_places.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <string>

namespace importers::calculix {

namespace {

// The status file has six digits, tables seven.
constexpr double kTimePrecision = 2e-6;
constexpr double kStatusPrecision = 1e-5;

bool agree(double a, double b, double precision) {
  return std::abs(a - b) <= precision * std::max(std::abs(a), std::abs(b));
}

// An end of an increment that the status file or the results know.
struct KnownTime {
  int increment = 0;
  double total = 0.0;
  double precision = kTimePrecision;
  std::optional<FrameNumber> frame;
};

class Placement {
 public:
  Placement(std::span<PrintedTable> tables, const std::vector<Procedure>& procedures, Frames& frames)
      : tables_(tables), procedures_(procedures), frames_(frames) {
    findKnownTimes();
    findBaseStates();
  }

  void run() {
    for (std::size_t i = 0; i < tables_.size(); ++i) {
      table_ = &tables_[i];
      switch (table_->format->rows) {
        case DatRows::mode:
          placeModes();
          break;
        case DatRows::modeSum:
          table_->step = step_;
          break;
        case DatRows::eigenvalue:
          startMode();
          break;
        case DatRows::frequency:
          startSteadyState();
          break;
        case DatRows::realPart:
        case DatRows::imaginaryPart:
          isImaginary_ = table_->format->rows == DatRows::imaginaryPart;
          seen_.clear();
          break;
        default:
          if (baseStates_.contains(i)) startBaseState();
          placeInFrame();
      }
    }
  }

 private:
  enum class Context { time, mode, baseState, steadyState };

  void findKnownTimes() {
    for (const auto& [place, times] : frames_.statusTimes()) {
      for (const IncrementTime& time : times) {
        known_[place.first].push_back({place.second, time.total, kStatusPrecision, {}});
      }
    }
    for (const auto& [step, order] : frames_.steps()) {
      for (const FrameNumber frame : order) {
        if (frames_[frame].kind == FrameKind::time) addKnownFrame(step, frame);
      }
    }
  }

  void addKnownFrame(int step, FrameNumber number) {
    const RunFrame& frame = frames_[number];
    std::vector<KnownTime>& times = known_[step];
    const auto same = std::find_if(times.begin(), times.end(), [&](const KnownTime& time) {
      return !time.frame && time.increment == frame.info.incrementNumber &&
             agree(time.total, frame.value, kStatusPrecision);
    });
    const KnownTime exact{frame.info.incrementNumber, frame.value, kTimePrecision, number};
    if (same != times.end()) {
      *same = exact;
      return;
    }
    const auto later =
        std::find_if(times.begin(), times.end(), [&](const KnownTime& time) { return time.total > frame.value; });
    times.insert(later, exact);
  }

  // A buckling step prints the state that it starts from before its factors, and then the same tables for each mode.
  void findBaseStates() {
    for (std::size_t i = 0; i < tables_.size(); ++i) {
      if (!isTitle(i, "buckling factor output")) continue;
      std::size_t mode = i + 1;
      while (mode < tables_.size() && tables_[mode].format->rows != DatRows::eigenvalue) ++mode;
      std::size_t count = 0;
      while (mode + 1 + count < tables_.size() && !tables_[mode + 1 + count].format->isMark() && count < i &&
             tables_[mode + 1 + count].format->rows != DatRows::mode) {
        ++count;
      }
      // What follows the only mode may belong to the next step.
      while (count > 0 && !comesBefore(i, mode + 1, count)) --count;
      for (std::size_t k = i - count; k < i; ++k) baseStates_.insert(k);
    }
  }

  bool isTitle(std::size_t place, std::string_view title) const {
    return tables_[place].format->title == title && tables_[place].format->rows == DatRows::mode;
  }

  // Whether the tables from `first` on are those directly before `end`.
  bool comesBefore(std::size_t end, std::size_t first, std::size_t count) const {
    for (std::size_t k = 0; k < count; ++k) {
      const PrintedTable& before = tables_[end - count + k];
      const PrintedTable& of = tables_[first + k];
      if (!before.isSameKind(of) || before.head.time != of.head.time) return false;
    }
    return true;
  }

  std::optional<Procedure> procedureOf(int step) const {
    const auto place = static_cast<std::size_t>(step) - 1;
    if (place < procedures_.size()) return procedures_[place];
    const auto order = frames_.steps().find(step);
    if (order == frames_.steps().end()) return std::nullopt;
    switch (frames_[order->second.front()].kind) {
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

  int lastStep() const {
    int last = std::max(step_ + 1, static_cast<int>(procedures_.size()));
    if (!frames_.steps().empty()) last = std::max(last, frames_.steps().rbegin()->first);
    if (!known_.empty()) last = std::max(last, known_.rbegin()->first);
    return last;
  }

  // The next step that does that; without one, the next step that nothing is known of, or simply the next one.
  int nextStepThat(Procedure procedure) const {
    for (int step = step_ + 1; step <= lastStep(); ++step) {
      if (procedureOf(step).value_or(procedure) == procedure) return step;
    }
    return step_ + 1;
  }

  void startStep(int step, Context context) {
    if (step != step_) {
      modesBefore_ = 0;
      diameters_.clear();
      modes_.clear();
    }
    step_ = step;
    context_ = context;
    begin();
  }

  // A new frame of the step.
  void begin() {
    frame_.reset();
    seen_.clear();
    isImaginary_ = false;
  }

  void placeModes() {
    if (table_->head.title == "eigenvalue output") startModes();
    if (table_->head.title == "buckling factor output") {
      const bool isBegun = context_ == Context::baseState;
      startStep(isBegun ? step_ : nextStepThat(Procedure::buckling), Context::mode);
      kind_ = FrameKind::bucklingMode;
      modes_ = table_->kept;
      factorColumn_ = 0;
    }
    table_->step = step_;
  }

  // Cyclic models have a table for each of their nodal diameters.
  void startModes() {
    const bool isCyclic = !table_->kept.empty() && table_->kept.front().labels[1] > 0;
    const int diameter = table_->kept.empty() ? 0 : table_->kept.front().labels[1];
    const bool goesOn = context_ == Context::mode && kind_ == FrameKind::mode && isCyclic && !diameters_.empty() &&
                        diameter > *diameters_.rbegin();
    if (goesOn) {
      modesBefore_ += static_cast<int>(modes_.size());
      begin();
    } else {
      startStep(nextStepThat(Procedure::modes), Context::mode);
    }
    diameters_.insert(diameter);
    kind_ = FrameKind::mode;
    modes_ = table_->kept;
    // Real modes have eigenvalue, rad/time, cycles/time and the imaginary part; complex ones no eigenvalue.
    factorColumn_ = table_->width > 3 ? 2 : 1;
  }

  void startMode() {
    context_ = Context::mode;
    begin();
    mode_ = static_cast<int>(std::lround(table_->head.number.value_or(1)));
    if (mode_ == 1) ofFirstMode_.clear();
  }

  void startSteadyState() {
    const double frequency = table_->head.number.value_or(0.0);
    const bool goesOn = context_ == Context::steadyState && frequency > frequency_;
    startStep(goesOn ? step_ : nextStepThat(Procedure::steadyState), Context::steadyState);
    frequency_ = frequency;
    takeFrame(FrameKind::steadyState, 0, frequency);
    table_->step = step_;
    table_->frame = frame_;
  }

  void startBaseState() {
    if (context_ == Context::baseState) return;
    startStep(nextStepThat(Procedure::buckling), Context::baseState);
    takeFrame(FrameKind::baseState, 0, 0.0);
  }

  void placeInFrame() {
    const double time = table_->head.time.value_or(time_);
    if (!belongsHere(time)) startTime(time);
    if (context_ == Context::mode && !frame_) {
      const auto place = static_cast<std::size_t>(mode_) - 1;
      const bool isListed = place < modes_.size() && factorColumn_ < modes_[place].numbers.size();
      takeFrame(kind_, modesBefore_ + mode_, isListed ? modes_[place].numbers[factorColumn_] : 0.0);
    }
    time_ = time;
    if (context_ == Context::mode && mode_ == 1) ofFirstMode_.insert(keyOf());
    // Steady states have two tables of each kind, the real one before the imaginary one.
    const int count = ++seen_[keyOf()];
    table_->isImaginary = isImaginary_ || (context_ == Context::steadyState && count == 2);
    table_->step = step_;
    table_->frame = frame_;
  }

  std::string keyOf() const { return table_->head.title + '\n' + table_->head.set; }

  bool belongsHere(double time) {
    const auto seen = seen_.find(keyOf());
    const int count = seen == seen_.end() ? 0 : seen->second;
    switch (context_) {
      case Context::time:
        return step_ > 0 && frame_ && count == 0 && time == time_;
      case Context::baseState:
        return count == 0;
      case Context::steadyState:
        return count < 2 && agree(time, frequency_, kTimePrecision);
      case Context::mode:
        break;
    }
    // All modes print the same, with the same time; what else comes belongs to the step behind.
    const bool isOfModes = mode_ == 1 ? seen_.empty() || time == time_ : ofFirstMode_.contains(keyOf());
    return mode_ > 0 && count == 0 && isOfModes;
  }

  // The frame of a kind of the step that stands for a value, a new one if there is none.
  void takeFrame(FrameKind kind, int number, double value) {
    const auto order = frames_.steps().find(step_);
    const bool isCounted = kind != FrameKind::steadyState;
    if (order != frames_.steps().end()) {
      for (const FrameNumber frame : order->second) {
        if (frames_[frame].kind != kind) continue;
        const bool isIt = isCounted ? frames_[frame].info.incrementNumber == number
                                    : agree(frames_[frame].value, value, kTimePrecision);
        if (isIt) {
          frame_ = frame;
          return;
        }
      }
    }
    frame_ = frames_.insert(step_, kind, number, value);
  }

  void startTime(double time) {
    const bool goesOn = context_ == Context::time && step_ > 0;
    const int first = goesOn ? step_ : step_ + 1;
    const int last = lastStep();
    for (int step = first; step <= last; ++step) {
      if (isInTime(step) && takeKnown(step, time)) return;
    }
    for (int step = first; step <= last; ++step) {
      if (isInTime(step) && mayHave(step, time)) return takeUnknown(step, time);
    }
    // Nothing says when a step ends.
    takeUnknown(goesOn && time > time_ ? step_ : step_ + 1, time);
  }

  bool isInTime(int step) const { return procedureOf(step).value_or(Procedure::time) == Procedure::time; }

  // Whether a step may have ended an increment then that nobody knows of: the status file knows all, results some.
  bool mayHave(int step, double time) const {
    const StepTimes& status = frames_.statusTimes();
    const auto listed = status.lower_bound({step, 0});
    if (listed != status.end() && listed->first.first == step) return false;
    if (step == step_ && time <= time_) return false;
    const auto known = known_.find(step);
    return known == known_.end() ? procedureOf(step).has_value() : time < known->second.back().total;
  }

  // Takes the next increment of a step that ends at that time.
  bool takeKnown(int step, double time) {
    const auto known = known_.find(step);
    if (known == known_.end()) return false;
    for (std::size_t place = step == step_ ? nextKnown_ : 0; place < known->second.size(); ++place) {
      KnownTime& increment = known->second[place];
      if (!agree(increment.total, time, increment.precision)) continue;
      startStep(step, Context::time);
      if (!increment.frame) increment.frame = frames_.insert(step, FrameKind::time, increment.increment, time);
      frame_ = increment.frame;
      nextKnown_ = place + 1;
      return true;
    }
    return false;
  }

  void takeUnknown(int step, double time) {
    startStep(step, Context::time);
    frame_ = frames_.insert(step, FrameKind::time, 0, time);
    nextKnown_ = 0;
  }

  std::span<PrintedTable> tables_;
  const std::vector<Procedure>& procedures_;
  Frames& frames_;
  std::map<int, std::vector<KnownTime>> known_;  // by step
  std::set<std::size_t> baseStates_;             // places of their tables

  PrintedTable* table_ = nullptr;
  int step_ = 0;
  Context context_ = Context::time;
  std::optional<FrameNumber> frame_;
  std::map<std::string, int> seen_;  // kinds of tables in the frame
  double time_ = 0.0;
  std::size_t nextKnown_ = 0;  // increment of the step

  FrameKind kind_ = FrameKind::mode;
  int mode_ = 0;  // as the solver counts
  int modesBefore_ = 0;
  std::set<int> diameters_;
  std::vector<DatValues> modes_;
  std::size_t factorColumn_ = 0;
  std::set<std::string> ofFirstMode_;
  bool isImaginary_ = false;
  double frequency_ = 0.0;
};

}  // namespace

void placeTables(std::span<PrintedTable> tables, const std::vector<Procedure>& procedures, Frames& frames) {
  Placement(tables, procedures, frames).run();
}

}  // namespace importers::calculix
