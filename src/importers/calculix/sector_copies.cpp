#include "importers/calculix/sector_copies.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "base/label_index.h"
#include "importers/run/set_names.h"

namespace importers::calculix {

namespace {

class SectorFinder {
 public:
  SectorFinder(const Deck& deck, int highest, std::size_t sectors)
      : highest_(highest), elements_(deck.mesh.elementLabels), sectors_(sectors), offsets_(sectors) {}

  // Whether all elements of the group are the deck's or copies of them.
  bool take(const FrdElementGroup& group) {
    const base::LabelIndex places(group.labels);
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
  base::LabelIndex elements_;
  std::vector<Sector> sectors_;
  std::vector<std::optional<long>> offsets_;
};

// With words before it as long as a set of the deck begins so in records.
std::string freeStem(const Deck& deck, std::string stem) {
  const auto begins = [&](const DeckSet* set) {
    return std::any_of(set->names.begin(), set->names.end(),
                       [&](const std::string& name) { return nameInRecords(name).starts_with(nameInRecords(stem)); });
  };
  const std::vector<const DeckSet*> sets = deck.setsInOrder();
  while (std::any_of(sets.begin(), sets.end(), begins)) stem = "CYCLIC-" + stem;
  return stem;
}

}  // namespace

std::optional<std::vector<Sector>> sectorsOf(const Deck& deck, const FrdElements& elements) {
  const std::vector<int>& labels = deck.mesh.elementLabels;
  if (!deck.sectorCopies || labels.empty()) return std::nullopt;
  const int highest = *std::max_element(labels.begin(), labels.end());
  if (highest < 1) return std::nullopt;
  std::size_t all = 0;
  for (const FrdElementGroup& group : elements.groups) all += group.labels.size();
  // A sector has an element at least.
  SectorFinder finder(deck, highest, std::min(all, static_cast<std::size_t>(deck.sectorCopies->sectors)));
  for (const FrdElementGroup& group : elements.groups) {
    if (!finder.take(group)) return std::nullopt;
  }
  return finder.finish();
}

std::vector<DeckSet> setsOfSectors(const Deck& deck, const std::optional<std::vector<Sector>>& sectors,
                                   const WarningSink& warn) {
  std::vector<DeckSet> sets;
  if (!deck.sectorCopies) return sets;
  const SourcePlace& place = deck.sectorCopies->place;
  if (!sectors) {
    warn(base::warning(place, "the copies of the sector (NGRAPH) cannot be distinguished in the results"));
    return sets;
  }
  const std::string stem = freeStem(deck, "SECTOR-");
  int number = 0;
  for (const Sector& sector : *sectors) {
    const std::string name = fmt::format("{}{}", stem, ++number);
    sets.push_back({odbstore::SetKind::element, DeckSetOrigin::lists, {name}, place, 0, sector.elements, {}});
    sets.push_back({odbstore::SetKind::node, DeckSetOrigin::lists, {name + kNodesSuffix}, place, 0, sector.nodes, {}});
  }
  return sets;
}

}  // namespace importers::calculix
