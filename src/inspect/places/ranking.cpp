#include "inspect/places/ranking.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace inspect {

namespace {

// A row among those that are first.
struct Candidate {
  double value;
  const RowValues* block;
  int row;
};

RankedPlace placeOf(const Candidate& candidate) {
  const RowValues& block = *candidate.block;
  RankedPlace place = {candidate.value, block.instance};
  if (block.nodes != nullptr) place.node = block.nodes[candidate.row];
  if (block.elements != nullptr) place.element = block.elements[candidate.row];
  if (block.points != nullptr) place.integrationPoint = block.points[candidate.row];
  return place;
}

int labelOf(const int* labels, int row) { return labels == nullptr ? -1 : labels[row]; }

bool isOnePlace(const Candidate& a, const Candidate& b) {
  if (a.value != b.value || labelOf(a.block->nodes, a.row) != labelOf(b.block->nodes, b.row)) return false;
  if (a.block != b.block && a.block->instance != b.block->instance) return false;
  return a.block->nodes != nullptr || (labelOf(a.block->elements, a.row) == labelOf(b.block->elements, b.row) &&
                                       labelOf(a.block->points, a.row) == labelOf(b.block->points, b.row));
}

}  // namespace

std::vector<RankedPlace> firstPlaces(const std::vector<RowValues>& blocks, kernels::Order order, std::size_t count,
                                     std::optional<double> from) {
  std::vector<Candidate> best;
  for (const RowValues& block : blocks) {
    for (int row = 0; count > 0 && row < block.rows; ++row) {
      const double value = block.of(row);
      if (best.size() == count && !isBefore(value, best.back().value, order)) continue;
      if (value != value || (from && isBefore(value, *from, order))) continue;
      const Candidate candidate = {value, &block, row};
      const auto isSame = [&](const Candidate& other) { return isOnePlace(candidate, other); };
      if (std::any_of(best.begin(), best.end(), isSame)) continue;
      const auto isBehind = [&](const Candidate& other) { return isBefore(value, other.value, order); };
      best.insert(std::find_if(best.begin(), best.end(), isBehind), candidate);
      if (best.size() > count) best.pop_back();
    }
  }
  std::vector<RankedPlace> places;
  for (const Candidate& candidate : best) places.push_back(placeOf(candidate));
  return places;
}

std::uint64_t countPlaces(const std::vector<RowValues>& blocks, double value) {
  std::uint64_t places = 0;
  std::unordered_map<std::string, std::unordered_set<int>> nodes;  // by instance
  for (const RowValues& block : blocks) {
    std::unordered_set<int>& seen = nodes[block.instance];
    for (int row = 0; row < block.rows; ++row) {
      if (block.of(row) != value) continue;
      if (block.nodes == nullptr || seen.insert(block.nodes[row]).second) ++places;
    }
  }
  return places;
}

std::uint64_t countRowsBefore(const std::vector<RowValues>& blocks, double value, kernels::Order order) {
  std::uint64_t rows = 0;
  for (const RowValues& block : blocks) {
    for (int row = 0; row < block.rows; ++row) rows += isBefore(block.of(row), value, order) ? 1 : 0;
  }
  return rows;
}

}  // namespace inspect
