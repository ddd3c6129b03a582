#include "importers/calculix/deck/deck_steps.h"

#include <algorithm>
#include <array>

#include "importers/calculix/deck/deck.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

using Kind = PrintRequest::Kind;

// Procedures that go on in time and say how long on their first line of data.
constexpr std::array<std::string_view, 10> kInTime = {"STATIC",
                                                      "DYNAMIC",
                                                      "MODALDYNAMIC",
                                                      "HEATTRANSFER",
                                                      "COUPLEDTEMPERATURE-DISPLACEMENT",
                                                      "UNCOUPLEDTEMPERATURE-DISPLACEMENT",
                                                      "VISCO",
                                                      "CFD",
                                                      "ELECTROMAGNETICS",
                                                      "SOILS"};
// What may carry FREQUENCY or TIME POINTS.
constexpr std::array<std::string_view, 11> kOutputs = {"NODEPRINT",     "ELPRINT",       "CONTACTPRINT", "SECTIONPRINT",
                                                       "FACEPRINT",     "NODEFILE",      "NODEOUTPUT",   "ELFILE",
                                                       "ELEMENTOUTPUT", "CONTACTOUTPUT", "CONTACTFILE"};

template <std::size_t count>
bool isOneOf(const std::array<std::string_view, count>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::optional<Kind> printKindOf(const std::string& keyword) {
  if (keyword == "NODEPRINT") return Kind::node;
  if (keyword == "ELPRINT") return Kind::element;
  if (keyword == "CONTACTPRINT") return Kind::contact;
  if (keyword == "SECTIONPRINT" || keyword == "FACEPRINT") return Kind::section;
  return std::nullopt;
}

std::string setOf(Kind kind, const Keyword& keyword) {
  const auto named = [&](const char* parameter) { return canonicalName(keyword.value(parameter).value_or("")); };
  switch (kind) {
    case Kind::node:
      return named("NSET");
    case Kind::element:
      return named("ELSET");
    case Kind::section:
      return named("SURFACE");
    case Kind::contact:
      break;
  }
  return keyword.has("SLAVE") ? named("SLAVE") + ", " + named("MASTER") : "";
}

std::optional<double> itemOf(std::string_view line, std::size_t place) {
  const std::vector<std::string_view> items = dataItems(line);
  return place < items.size() ? numberFrom(items[place]) : std::nullopt;
}

}  // namespace

const DeckStep* DeckSteps::find(int step) const {
  const int place = step - 1 - stepsBefore.value_or(0);
  return place >= 0 && place < static_cast<int>(steps.size()) ? &steps[static_cast<std::size_t>(place)] : nullptr;
}

void DeckStepReader::start(const Keyword& keyword) {
  data_ = Data::none;
  if (keyword.name == "RESTART" && keyword.has("READ")) {
    const auto step = keyword.value("STEP");
    steps_.stepsBefore = step ? integerFrom(*step) : std::nullopt;
    isRestart_ = true;
  } else if (keyword.name == "STEP") {
    startStep();
  } else if (keyword.name == "MODELCHANGE") {
    steps_.removesElements = true;
  } else if (keyword.name == "TIMEPOINTS") {
    points_.push_back({canonicalName(keyword.value("NAME").value_or("")),
                       {},
                       canonicalName(keyword.value("TIME").value_or("")).starts_with("TOTAL"),
                       keyword.has("GENERATE")});
    data_ = Data::points;
  }
  if (!hasStep()) return;
  if (keyword.name == "SELECTCYCLICSYMMETRYMODES") {
    const auto diameter = [&](const char* parameter) {
      return integerFrom(keyword.value(parameter).value_or("0")).value_or(0);
    };
    step().isCyclic = true;
    step().diameters = {diameter("NMIN"), std::max(diameter("NMIN"), diameter("NMAX"))};
  }
  startProcedure(keyword);
  if (isOneOf(kOutputs, keyword.name)) takeFrequency(keyword);
  if (const std::optional<Kind> kind = printKindOf(keyword.name)) startPrint(*kind, keyword);
}

void DeckStepReader::startStep() {
  DeckStep next;
  next.knowsPrints = !isRestart_;
  if (hasStep()) {
    const DeckStep& before = step();
    next.frequency = before.frequency;
    next.timePoints = before.timePoints;
    next.timePointsAreTotal = before.timePointsAreTotal;
    next.prints = before.prints;
  }
  steps_.steps.push_back(std::move(next));
  asked_.clear();
}

void DeckStepReader::startProcedure(const Keyword& keyword) {
  const bool isHarmonic = canonicalName(keyword.value("HARMONIC").value_or("")) != "NO";
  // Unit loads of Green functions are written as if they were modes.
  const bool hasModes = keyword.name == "FREQUENCY" || keyword.name == "COMPLEXFREQUENCY" || keyword.name == "GREEN" ||
                        (keyword.name == "HEATTRANSFER" && keyword.has("FREQUENCY"));
  if (hasModes) {
    step().procedure = Procedure::modes;
  } else if (keyword.name == "BUCKLE") {
    step().procedure = Procedure::buckling;
  } else if (keyword.name == "STEADYSTATEDYNAMICS" && isHarmonic) {
    step().procedure = Procedure::steadyState;
    data_ = Data::range;
  } else if (keyword.name == "STEADYSTATEDYNAMICS") {
    step().isPeriodic = true;
  } else if (isOneOf(kInTime, keyword.name)) {
    startTime(keyword);
  }
}

void DeckStepReader::startTime(const Keyword& keyword) {
  step().isFluid = keyword.name == "CFD";
  step().isUncoupled = keyword.name == "UNCOUPLEDTEMPERATURE-DISPLACEMENT";
  // Steady states in modal dynamics end when they are steady.
  const bool isModal = keyword.name == "MODALDYNAMIC" || keyword.has("MODALDYNAMIC");
  const bool hasEnd = !isModal || !keyword.has("STEADYSTATE");
  step().period = hasEnd ? std::optional(1.0) : std::nullopt;
  if (keyword.has("TIMERESET")) step().startsAt = 0.0;
  if (const auto time = keyword.value("TOTALTIMEATSTART")) step().startsAt = numberFrom(*time);
  data_ = hasEnd ? Data::period : Data::none;
}

// FREQUENCY=0 takes requests back and leaves the number as it is.
void DeckStepReader::takeFrequency(const Keyword& keyword) {
  isWanted_ = true;
  if (const auto text = keyword.value("FREQUENCY")) {
    const int frequency = integerFrom(*text).value_or(1);
    isWanted_ = frequency != 0;
    if (frequency > 0) {
      step().frequency = frequency;
      step().timePoints.clear();
    }
  }
  const auto name = keyword.value("TIMEPOINTS");
  if (!name) return;
  for (const TimePoints& points : points_) {
    if (points.name != canonicalName(*name)) continue;
    step().timePoints = points.times;
    std::sort(step().timePoints.begin(), step().timePoints.end());
    step().timePointsAreTotal = points.areTotal;
  }
}

void DeckStepReader::wipe(Kind kind) {
  std::erase_if(step().prints, [&](const PrintRequest& request) { return request.kind == kind; });
}

void DeckStepReader::startPrint(Kind kind, const Keyword& keyword) {
  const bool isFirst = std::find(asked_.begin(), asked_.end(), kind) == asked_.end();
  if (isFirst || !isWanted_) wipe(kind);
  if (isFirst) asked_.push_back(kind);
  if (!isWanted_) return;
  const std::string totals = canonicalName(keyword.value("TOTALS").value_or(""));
  using enum PrintRequest::Totals;
  request_ = {kind, setOf(kind, keyword), "", totals == "ONLY" ? only : totals == "YES" ? yes : no};
  data_ = Data::prints;
  if (kind != Kind::section) return;
  request_.key = "SOF";
  step().prints.push_back(request_);
  data_ = Data::none;
}

void DeckStepReader::takePrints(std::string_view line) {
  for (const std::string_view item : dataItems(line)) {
    request_.key = upperCased(item);
    if (!request_.key.empty()) step().prints.push_back(request_);
  }
}

void DeckStepReader::takePoints(std::string_view line) {
  TimePoints& points = points_.back();
  std::vector<double> numbers;
  for (const std::string_view item : dataItems(line)) {
    if (const std::optional<double> time = numberFrom(item)) numbers.push_back(*time);
  }
  if (!points.areGenerated) {
    points.times.insert(points.times.end(), numbers.begin(), numbers.end());
    return;
  }
  constexpr double kMostPoints = 1e6;  // beyond that the deck is not meant seriously
  if (numbers.size() < 3 || !(numbers[2] > 0.0) || (numbers[1] - numbers[0]) / numbers[2] > kMostPoints) return;
  const int count = static_cast<int>((numbers[1] - numbers[0]) / numbers[2] + 1e-6);
  for (int i = 0; i <= count; ++i) points.times.push_back(numbers[0] + i * numbers[2]);
}

void DeckStepReader::takeData(std::string_view line) {
  switch (data_) {
    case Data::prints:
      takePrints(line);
      return;
    case Data::points:
      takePoints(line);
      return;
    case Data::period:
      if (const std::optional<double> period = itemOf(line, 1)) step().period = period;
      break;
    case Data::range:
      step().lastFrequency = itemOf(line, 1).value_or(0.0);
      break;
    case Data::none:
      break;
  }
  data_ = Data::none;
}

DeckSteps DeckStepReader::finish() { return std::move(steps_); }

}  // namespace importers::calculix
