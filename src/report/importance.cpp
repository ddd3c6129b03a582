#include "report/importance.h"

#include <algorithm>
#include <deque>
#include <tuple>
#include <utility>

namespace report {

namespace {

enum class Pass { lastFrames, mainFields, otherFields, lastDetails, details };

// The lower the earlier.
struct Ranked {
  Pass pass;
  int frameRank;  // 0 for the last frame
  std::size_t step;
  int fieldRank;
  Candidate candidate;

  auto key() const { return std::tie(pass, frameRank, step, fieldRank, candidate.field); }
};

int rankOf(const std::string& field) { return field == "U" ? 0 : field == "S" ? 1 : 2; }

Pass passOf(const std::string& field, bool isLast, bool isDetail) {
  if (isDetail) return isLast ? Pass::lastDetails : Pass::details;
  if (isLast) return Pass::lastFrames;
  return rankOf(field) < 2 ? Pass::mainFields : Pass::otherFields;
}

void addField(std::vector<Ranked>& all, std::size_t step, const StepFields::Field& field,
              const std::vector<int>& ranks) {
  for (const int frame : field.frames) {
    const int rank = ranks[static_cast<std::size_t>(frame)];
    const auto add = [&](bool isDetail) {
      all.push_back({passOf(field.name, rank == 0, isDetail), rank, step, rankOf(field.name),
                     Candidate{step, frame, field.name, isDetail}});
    };
    add(false);
    if (field.isTensor) add(true);
  }
}

}  // namespace

std::vector<int> spread(int count) {
  if (count <= 0) return {};
  std::vector<int> order = {count - 1};
  if (count > 1) order.push_back(0);
  std::deque<std::pair<int, int>> gaps = {{0, count - 1}};  // whose ends are taken
  while (!gaps.empty()) {
    const auto [first, last] = gaps.front();
    gaps.pop_front();
    if (last - first < 2) continue;
    const int middle = first + (last - first) / 2;
    order.push_back(middle);
    gaps.emplace_back(first, middle);
    gaps.emplace_back(middle, last);
  }
  return order;
}

std::vector<Candidate> byImportance(const std::vector<StepFields>& steps) {
  std::vector<Ranked> all;
  for (std::size_t s = 0; s < steps.size(); ++s) {
    const std::vector<int> order = spread(steps[s].frames);
    std::vector<int> ranks(order.size());
    for (std::size_t rank = 0; rank < order.size(); ++rank)
      ranks[static_cast<std::size_t>(order[rank])] = static_cast<int>(rank);
    for (const StepFields::Field& field : steps[s].fields) addField(all, s, field, ranks);
  }
  std::stable_sort(all.begin(), all.end(), [](const Ranked& a, const Ranked& b) { return a.key() < b.key(); });
  std::vector<Candidate> candidates;
  for (Ranked& ranked : all) candidates.push_back(std::move(ranked.candidate));
  return candidates;
}

}  // namespace report
