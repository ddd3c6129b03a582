#include "importers/run/merged_rows.h"

#include <cstdint>

namespace importers {

namespace {

int at(std::span<const int> labels, std::size_t row) { return labels.empty() ? 0 : labels[row]; }

void take(std::vector<int>& to, std::span<const int> from, std::size_t row) {
  if (!from.empty()) to.push_back(from[row]);
}

}  // namespace

std::size_t MergedRows::Hash::operator()(const Key& key) const {
  // Multiplying by an odd number with bits all over spreads neighbouring labels; each label keeps its own share.
  constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15U;
  std::uint64_t hash = 0;
  for (const int label : key) hash = (hash ^ static_cast<std::uint32_t>(label)) * kSpread;
  return hash ^ (hash >> 32U);
}

void MergedRows::add(odbstore::Position position, const RowLabels& labels, std::span<const double> values) {
  const std::size_t count = odbstore::hasElementLabels(position) ? labels.elements.size() : labels.nodes.size();
  const std::size_t width = count == 0 ? 0 : values.size() / count;
  for (std::size_t row = 0; row < count; ++row) {
    const Key key = {at(labels.elements, row), at(labels.integrationPoints, row), at(labels.nodes, row)};
    if (!known_.insert(key).second) continue;
    take(labels_.elements, labels.elements, row);
    take(labels_.integrationPoints, labels.integrationPoints, row);
    take(labels_.nodes, labels.nodes, row);
    const auto from = values.subspan(row * width, width);
    values_.insert(values_.end(), from.begin(), from.end());
  }
}

}  // namespace importers
