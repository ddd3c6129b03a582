#include "importers/calculix/dat/printed_outputs.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "importers/calculix/dat/base_states.h"

namespace importers::calculix {

namespace {

// Forces between two surfaces are printed in up to three tables alike: all, normal and shear forces.
constexpr int kTablesOfForces = 3;
// The columns of modes: cycles per time come after the eigenvalue and radians per time.
constexpr std::size_t kFrequencyColumn = 2;
constexpr std::size_t kFactorColumn = 0;

class OutputFinder {
 public:
  OutputFinder(std::span<const PrintedTable> tables, const RunSteps& steps, const PrintPlans& plans)
      : tables_(tables), steps_(steps), plans_(plans), baseStates_(findBaseStates(tables)) {
    found_.steps.resize(tables.size());
    found_.areImaginary.resize(tables.size());
    found_.parts.resize(tables.size());
  }

  PrintedOutputs find() {
    for (at_ = 0; at_ < tables_.size() && !found_.misfit; ++at_) {
      switch (table().format->rows) {
        case DatRows::mode:
        case DatRows::modeSum:
          takeModes();
          break;
        case DatRows::eigenvalue:
          startMode();
          break;
        case DatRows::frequency:
          startFrequency();
          break;
        case DatRows::realPart:
        case DatRows::imaginaryPart:
          isImaginary_ = table().format->rows == DatRows::imaginaryPart;
          inOutput_.clear();
          break;
        default:
          if (baseStates_.contains(at_)) startBaseState();
          take();
      }
    }
    setBounds();
    return std::move(found_);
  }

 private:
  const PrintedTable& table() const { return tables_[at_]; }
  PrintedOutput& output() { return found_.outputs.back(); }

  void open(FrameKind kind) {
    found_.outputs.emplace_back();
    output().kind = kind;
    output().step = kind == FrameKind::time ? 0 : step_;
    output().after = step_;
    output().line = table().head.line;
    sectionsBefore_.push_back(entered_.size());
    inOutput_.clear();
    isImaginary_ = false;
    isOpen_ = true;
  }

  void enter(int step) {
    step_ = step;
    entered_.push_back(step);
    isOpen_ = false;
    hasTimes_ = false;
    isListed_ = false;
    kind_ = FrameKind::mode;
    lastDiameter_.reset();
    modesBefore_ = 0;
    modes_.clear();
  }

  // The next step with that procedure; without a deck, the next step of unknown procedure, or simply the next one.
  int nextStepThat(Procedure procedure) {
    const int first = step_ + (hasTimes_ && !steps_.isWhole ? 2 : 1);
    for (auto step = steps_.steps.lower_bound(first); step != steps_.steps.end(); ++step) {
      if (step->second.procedure.value_or(procedure) == procedure) return step->first;
    }
    if (steps_.isWhole) found_.misfit = at_;
    return std::max(first, steps_.last() + 1);
  }

  void takeModes() {
    const DatBegins begins = table().format->traits.begins;
    if (begins == DatBegins::modes) startModes();
    if (begins == DatBegins::bucklingModes) {
      if (!isIn(FrameKind::baseState)) enter(nextStepThat(Procedure::buckling));
      list(FrameKind::bucklingMode, kFactorColumn);
    }
    found_.steps[at_] = step_;
  }

  bool isIn(FrameKind kind) const { return isOpen_ && found_.outputs.back().kind == kind; }

  // Cyclic models have a table for each of their nodal diameters.
  void startModes() {
    const std::vector<DatValues>& rows = table().kept;
    const bool hasDiameter = !rows.empty() && rows.front().hasDiameter;
    const std::optional<int> diameter = hasDiameter ? std::optional(rows.front().labels[1]) : std::nullopt;
    if (diameter && lastDiameter_ && !hasTimes_ && isInStep(*diameter)) {
      modesBefore_ += static_cast<int>(modes_.size());
    } else {
      enter(nextStepThat(Procedure::modes));
    }
    lastDiameter_ = diameter;
    list(FrameKind::mode, kFrequencyColumn);
  }

  // Whether a further diameter is one of the same step.
  bool isInStep(int diameter) const {
    if (diameter <= *lastDiameter_) return false;
    const RunStep* const step = steps_.find(step_);
    if (step == nullptr) return true;
    if (step->deck != nullptr && step->deck->isCyclic) return diameter <= step->deck->diameters.second;
    return step->diameters.empty() || step->diameters.contains(diameter);
  }

  // The modes that the table lists are those of the outputs to come.
  void list(FrameKind kind, std::size_t column) {
    isOpen_ = false;
    isListed_ = true;
    kind_ = kind;
    modes_ = table().kept;
    mode_ = 0;
    const std::vector<std::size_t>& columns = table().columns;
    column_ = static_cast<std::size_t>(std::find(columns.begin(), columns.end(), column) - columns.begin());
  }

  void startMode() {
    mode_ = static_cast<int>(std::lround(table().head.number.value_or(1)));
    if (mode_ == 1) {
      ofFirstMode_.clear();
      // Green functions have modes without a list of them.
      if (!isListed_) enter(nextStepThat(Procedure::modes));
      isListed_ = false;
    }
    const auto row =
        std::find_if(modes_.begin(), modes_.end(), [this](const DatValues& r) { return r.labels[0] == mode_; });
    const bool isListed = row != modes_.end() && column_ < row->numbers.size();
    open(kind_);
    output().mode = mode_;
    output().place = modesBefore_ + mode_;
    output().nodalDiameter = lastDiameter_;
    output().value = isListed ? row->numbers[column_] : 0.0;
  }

  void startFrequency() {
    const double frequency = table().head.number.value_or(0.0);
    if (!isIn(FrameKind::steadyState) || !isInStep(frequency)) enter(nextStepThat(Procedure::steadyState));
    open(FrameKind::steadyState);
    output().value = frequency;
    output().tables.push_back(at_);
  }

  // Whether a further frequency is one of the same step.
  bool isInStep(double frequency) const {
    if (frequency <= found_.outputs.back().value) return false;
    const RunStep* const step = steps_.find(step_);
    const bool hasEnd = step != nullptr && step->deck != nullptr && step->deck->lastFrequency > 0.0;
    return !hasEnd || rounded(frequency, kDigitsOfTables).low <= step->deck->lastFrequency;
  }

  void startBaseState() {
    if (isIn(FrameKind::baseState)) return;
    enter(nextStepThat(Procedure::buckling));
    open(FrameKind::baseState);
  }

  void take() {
    if (table().isOfSection && isOpen_) {
      output().tables.push_back(at_);
      found_.parts[at_] = found_.parts[section_];
      found_.areImaginary[at_] = found_.areImaginary[section_];
      return;
    }
    const TableKind kind = tableKindOf(table());
    if (!isOpen_ || !belongsHere(kind)) {
      open(FrameKind::time);
      output().value = table().head.time.value_or(0.0);
      output().plans = plans_.thatPrint(kind, 0, plans_.all());
      hasTimes_ = true;
      mode_ = 0;
    }
    add(kind);
  }

  void add(const TableKind& kind) {
    std::vector<std::size_t>& alike = inOutput_[kind];
    const int count = static_cast<int>(alike.size());
    const bool isTime = output().kind == FrameKind::time;
    if (isTime) output().plans = plans_.thatPrint(kind, count, output().plans);
    if (mode_ == 1) ofFirstMode_.insert(kind);
    alike.push_back(at_);
    output().tables.push_back(at_);
    const int most = mostOf(kind);
    // Steady states have all their tables twice, the real ones before the imaginary ones.
    found_.areImaginary[at_] = isImaginary_ || (output().kind == FrameKind::steadyState && count >= most);
    if (table().format->rows != DatRows::section) return;
    section_ = at_;
    const int plan = !isTime ? plans_.of(step_) : output().plans.empty() ? -1 : output().plans.front();
    found_.parts[at_] = plans_.partOfForces(plan, table(), isTime ? count : count % most);
  }

  // How often a kind of table is printed in one output of the step.
  int mostOf(const TableKind& kind) const {
    const bool isUnknown = plans_.of(step_) < 0 && table().format->rows == DatRows::section;
    return isUnknown && kind.second.find(", ") != std::string::npos ? kTablesOfForces : plans_.timesIn(step_, kind);
  }

  bool belongsHere(const TableKind& kind) {
    const auto alike = inOutput_.find(kind);
    const int count = alike == inOutput_.end() ? 0 : static_cast<int>(alike->second.size());
    const double time = table().head.time.value_or(output().value);
    switch (output().kind) {
      case FrameKind::time:
        return time == output().value && mayCome(kind, count);
      case FrameKind::steadyState:
        return rounded(time, kDigitsOfTables).meets(rounded(output().value, kDigitsOfTables)) &&
               count < 2 * mostOf(kind);
      case FrameKind::baseState:
        return baseStates_.contains(at_);
      case FrameKind::mode:
      case FrameKind::bucklingMode:
        break;
    }
    // All modes print the same, with the same time; what else comes belongs to the step after.
    if (output().tables.empty() && mode_ == 1) modeTime_ = time;
    return count < mostOf(kind) && (mode_ == 1 ? time == modeTime_ : ofFirstMode_.contains(kind));
  }

  bool mayCome(const TableKind& kind, int count) {
    if (!plans_.all().empty()) return !plans_.thatPrint(kind, count, output().plans).empty();
    if (count == 0) return true;
    const std::vector<std::size_t>& alike = inOutput_[kind];
    if (table().format->rows == DatRows::section && kind.second.find(", ") != std::string::npos) {
      return count < kTablesOfForces;
    }
    return std::any_of(alike.begin(), alike.end(), [this](std::size_t other) { return isTheSame(other, at_); });
  }

  // Whether two tables of a kind can be of one output: they show the same, or other axes.
  bool isTheSame(std::size_t a, std::size_t b) const {
    if (tables_[a].format->rows == DatRows::section) {
      if (b + 1 >= tables_.size()) return false;
      ++a, ++b;
    }
    return tables_[a].fingerprint == tables_[b].fingerprint || tables_[a].hasLocalRows != tables_[b].hasLocalRows;
  }

  void setBounds() {
    for (std::size_t i = 0; i < found_.outputs.size(); ++i) {
      if (sectionsBefore_[i] < entered_.size()) found_.outputs[i].before = entered_[sectionsBefore_[i]];
    }
  }

  std::span<const PrintedTable> tables_;
  const RunSteps& steps_;
  const PrintPlans& plans_;
  std::set<std::size_t> baseStates_;
  PrintedOutputs found_;

  std::size_t at_ = 0;
  bool isOpen_ = false;                                     // whether tables can belong to the last output
  std::map<TableKind, std::vector<std::size_t>> inOutput_;  // the tables of each part of it
  bool isImaginary_ = false;
  std::size_t section_ = 0;  // the table whose forces come

  int step_ = 0;                             // the last step that is known and not in time
  std::vector<int> entered_;                 // all of them
  std::vector<std::size_t> sectionsBefore_;  // how many were before each output
  bool hasTimes_ = false;                    // whether there have been times since
  std::optional<int> lastDiameter_;
  int modesBefore_ = 0;  // of other diameters
  std::vector<DatValues> modes_;
  bool isListed_ = false;  // whether a list of modes is without its outputs yet
  FrameKind kind_ = FrameKind::mode;
  std::size_t column_ = 0;  // with their values
  int mode_ = 0;
  double modeTime_ = 0.0;
  std::set<TableKind> ofFirstMode_;
};

}  // namespace

PrintedOutputs findOutputs(std::span<const PrintedTable> tables, const RunSteps& steps, const PrintPlans& plans) {
  return OutputFinder(tables, steps, plans).find();
}

}  // namespace importers::calculix
