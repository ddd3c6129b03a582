#include "importers/calculix/sector_copies.h"

#include <algorithm>
#include <cstddef>

#include "importers/label_index.h"

namespace importers::calculix {

namespace {

class SectorFinder {
 public:
  SectorFinder(const Deck& deck, int highest) : highest_(highest) {
    const std::vector<int>& labels = deck.mesh.elementLabels;
    elements_ = LabelIndex(labels);
    sectors_.resize(static_cast<std::size_t>(deck.sectorCopies->sectors));
    offsets_.resize(sectors_.size());
  }

  // Whether all elements of the group are the deck's or copies of them.
  bool take(const FrdElementGroup& group) {
    const LabelIndex places(group.labels);
    const auto width = static_cast<std::size_t>(group.nodesPerElement);
    for (std::size_t i = 0; i < group.labels.size(); ++i) {
      const auto sector = static_cast<std::size_t>((group.labels[i] - 1) / highest_);
      const int original = (group.labels[i] - 1) % highest_ + 1;
      const int place = places.placeOf(original);
      if (group.labels[i] < 1 || sector >= sectors_.size() || place < 0 || !elements_.contains(original)) return false;
      sectors_[sector].elements.push_back(group.labels[i]);
      const int* const nodes = group.connectivity.data() + i * width;
      const int* const from = group.connectivity.data() + static_cast<std::size_t>(place) * width;
      if (!takeNodes(sector, nodes, from, width)) return false;
    }
    return true;
  }

  std::vector<Sector> finish() {
    for (Sector& sector : sectors_) {
      std::sort(sector.elements.begin(), sector.elements.end());
      bringInOrder(sector.nodes);
    }
    return std::move(sectors_);
  }

 private:
  static constexpr std::size_t kFewNodes = 1U << 20;

  static void bringInOrder(std::vector<int>& labels) {
    std::sort(labels.begin(), labels.end());
    labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
  }

  bool takeNodes(std::size_t sector, const int* nodes, const int* from, std::size_t width) {
    std::optional<long>& offset = offsets_[sector];
    if (!offset) offset = static_cast<long>(nodes[0]) - from[0];
    for (std::size_t k = 0; k < width; ++k) {
      if (static_cast<long>(nodes[k]) - from[k] != *offset) return false;
    }
    std::vector<int>& known = sectors_[sector].nodes;
    known.insert(known.end(), nodes, nodes + width);
    // Nodes come once for each element that they have: they are thinned out now and then.
    if (known.size() >= kFewNodes && known.size() == known.capacity()) bringInOrder(known);
    return true;
  }

  int highest_;
  LabelIndex elements_;
  std::vector<Sector> sectors_;
  std::vector<std::optional<long>> offsets_;
};

}  // namespace

std::optional<std::vector<Sector>> sectorsOf(const Deck& deck, const FrdElements& elements) {
  const std::vector<int>& labels = deck.mesh.elementLabels;
  if (!deck.sectorCopies || labels.empty()) return std::nullopt;
  const int highest = *std::max_element(labels.begin(), labels.end());
  if (highest < 1) return std::nullopt;
  SectorFinder finder(deck, highest);
  for (const FrdElementGroup& group : elements.groups) {
    if (!finder.take(group)) return std::nullopt;
  }
  return finder.finish();
}

}  // namespace importers::calculix
