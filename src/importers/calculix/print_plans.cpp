#include "importers/calculix/print_plans.h"

#include <algorithm>

namespace importers::calculix {

namespace {

// A set with a comma in its name is printed up to it; pairs of surfaces have a blank behind theirs.
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
  for (const auto& [number, step] : steps.steps) {
    if (step.deck == nullptr || !step.deck->knowsPrints) continue;
    const bool isNew = plans_.empty() || plans_.back().requests != step.deck->prints;
    if (isNew) {
      all_.push_back(static_cast<int>(plans_.size()));
      plans_.push_back({step.deck->prints, tablesOf(step.deck->prints)});
    }
    ofStep_[number] = static_cast<int>(plans_.size()) - 1;
  }
}

std::vector<int> PrintPlans::thatPrint(const TableKind& kind, int count, const std::vector<int>& plans) const {
  const auto timesIn = [&](int plan) {
    const auto& times = plans_[static_cast<std::size_t>(plan)].times;
    const auto known = times.find(kind);
    return known == times.end() ? 0 : known->second;
  };
  const bool isKnown = std::any_of(all_.begin(), all_.end(), [&](int plan) { return timesIn(plan) > 0; });
  std::vector<int> found;
  for (const int plan : plans) {
    if (isKnown ? timesIn(plan) > count : count == 0) found.push_back(plan);
  }
  return found;
}

int PrintPlans::of(int step) const {
  const auto plan = ofStep_.find(step);
  return plan == ofStep_.end() ? -1 : plan->second;
}

int PrintPlans::timesIn(int step, const TableKind& kind) const {
  const int plan = of(step);
  if (plan < 0) return 1;
  const auto& times = plans_[static_cast<std::size_t>(plan)].times;
  const auto known = times.find(kind);
  return known == times.end() ? 1 : known->second;
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
