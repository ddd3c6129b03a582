#include "importers/calculix/dat/print_plans.h"

#include <algorithm>

namespace importers::calculix {

namespace {

// A set with a comma in its name is printed up to it; pairs of surfaces have a blank after theirs.
std::string printedName(const std::string& set) {
  const std::size_t comma = set.find(',');
  const bool isPair = comma != std::string::npos && set.substr(comma).starts_with(", ");
  return isPair ? set : set.substr(0, comma);
}

bool isSum(const DatFormat& format) { return format.rows == DatRows::total || format.rows == DatRows::wholeModel; }

bool isAsked(const PrintRequest& request, const DatFormat& format) {
  if (!format.isAskedBy(request.key)) return false;
  // The number of contact elements has no rows besides its sum.
  if (request.key == "CNUM") return true;
  return isSum(format) ? request.totals != PrintRequest::Totals::no : request.totals != PrintRequest::Totals::only;
}

std::map<TableKind, int> tablesOf(const std::vector<PrintRequest>& requests) {
  std::map<TableKind, int> times;
  for (const PrintRequest& request : requests) {
    for (const DatFormat& format : datFormats()) {
      if (isAsked(request, format)) ++times[{std::string(format.title), printedName(request.set)}];
    }
  }
  return times;
}

}  // namespace

TableKind tableKindOf(const PrintedTable& table) {
  const std::string& set = table.head.set;
  const std::size_t pair = set.find(", ");
  if (pair == std::string::npos) return {table.head.title, canonicalName(set)};
  return {table.head.title, canonicalName(set.substr(0, pair)) + ", " + canonicalName(set.substr(pair + 2))};
}

PrintPlans::PrintPlans(const RunSteps& steps) {
  std::map<std::vector<PrintRequest>, int> known;
  for (const auto& [number, step] : steps.steps) {
    if (step.deck == nullptr || !step.deck->knowsPrints) continue;
    const auto [plan, isNew] = known.try_emplace(step.deck->prints, static_cast<int>(plans_.size()));
    ofStep_[number] = plan->second;
    if (!isNew) continue;
    all_.push_back(plan->second);
    plans_.push_back({step.deck->prints, tablesOf(step.deck->prints)});
    for (const auto& [kind, times] : plans_.back().times) kinds_.insert(kind);
  }
}

int PrintPlans::timesOf(int plan, const TableKind& kind) const {
  const auto& times = plans_[static_cast<std::size_t>(plan)].times;
  const auto known = times.find(kind);
  return known == times.end() ? 0 : known->second;
}

std::vector<int> PrintPlans::thatPrint(const TableKind& kind, int count, const std::vector<int>& plans) const {
  const bool isKnown = kinds_.contains(kind);
  std::vector<int> found;
  for (const int plan : plans) {
    if (isKnown ? timesOf(plan, kind) > count : count == 0) found.push_back(plan);
  }
  return found;
}

int PrintPlans::of(int step) const {
  const auto plan = ofStep_.find(step);
  return plan == ofStep_.end() ? -1 : plan->second;
}

int PrintPlans::timesIn(int step, const TableKind& kind) const {
  const int plan = of(step);
  return plan < 0 ? 1 : std::max(timesOf(plan, kind), 1);
}

std::string PrintPlans::partOfForces(int plan, const PrintedTable& table, int n) const {
  int place = 0;
  if (plan >= 0) {
    const std::string set = tableKindOf(table).second;
    for (const PrintRequest& request : plans_[static_cast<std::size_t>(plan)].requests) {
      if (!table.format->isAskedBy(request.key) || printedName(request.set) != set || place++ != n) continue;
      return request.key == "CFN" || request.key == "CFS" ? request.key : "";
    }
  }
  return n == 0 ? "" : std::to_string(n + 1);
}

}  // namespace importers::calculix
