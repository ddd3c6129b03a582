#include "inspect/places/ranking.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace inspect {

namespace {

RankedPlace placeOf(const RowValues& block, int row) {
  RankedPlace place;
  place.value = block.of(row);
  place.instance = block.instance;
  if (block.nodes != nullptr) place.node = block.nodes[row];
  if (block.elements != nullptr) place.element = block.elements[row];
  if (block.points != nullptr) place.integrationPoint = block.points[row];
  return place;
}

bool isOnePlace(const RankedPlace& a, const RankedPlace& b) {
  if (a.instance != b.instance || a.value != b.value || a.node != b.node) return false;
  return a.node >= 0 || (a.element == b.element && a.integrationPoint == b.integrationPoint);
}

}  // namespace

std::vector<RankedPlace> firstPlaces(const std::vector<RowValues>& blocks, kernels::Order order, std::size_t count,
                                     std::optional<double> from) {
  std::vector<RankedPlace> best;
  for (const RowValues& block : blocks) {
    for (int row = 0; row < block.rows; ++row) {
      const double value = block.of(row);
      if (best.size() == count && !isBefore(value, best.back().value, order)) continue;
      if (value != value || (from && isBefore(value, *from, order))) continue;
      const RankedPlace place = placeOf(block, row);
      if (std::any_of(best.begin(), best.end(), [&](const RankedPlace& other) { return isOnePlace(place, other); }))
        continue;
      const auto behind = std::find_if(best.begin(), best.end(),
                                       [&](const RankedPlace& other) { return isBefore(value, other.value, order); });
      best.insert(behind, place);
      if (best.size() > count) best.pop_back();
    }
  }
  return best;
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
