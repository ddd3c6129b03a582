#include "importers/calculix/model.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "importers/calculix/deck_keyword.h"

namespace importers::calculix {

namespace {

// Results come for all nodes or for a few sets again and again; more different ones are seldom in use at once.
constexpr std::size_t kKeptPlaces = 8;

// The deck's name for the type of an element, where it has one and the solver has not turned the element into another
// (shells and beams are written as solids).
std::string typeName(const Deck& deck, int label, int code, int nodesPerElement) {
  const auto found = deck.typeOfElement.find(label);
  if (found != deck.typeOfElement.end()) {
    const std::string& type = deck.elementTypes[static_cast<std::size_t>(found->second)];
    if (nodesOfElementType(type) == nodesPerElement) return type;
  }
  return elementTypeName(code);
}

}  // namespace

odbstore::LocationId RowPlaces::nodal() {
  if (!nodal_) nodal_ = writer_.addLocation({kInstance, odbstore::Position::nodal, "", 0, ""}, {labels_, {}, {}});
  return *nodal_;
}

const std::vector<ElementNodalRows>& RowPlaces::elementNodal() {
  if (elementNodal_) return *elementNodal_;
  std::unordered_map<int, int> rowOfNode;
  rowOfNode.reserve(labels_.size());
  for (std::size_t row = 0; row < labels_.size(); ++row) rowOfNode.emplace(labels_[row], static_cast<int>(row));
  elementNodal_.emplace();
  for (const ElementGroup& group : groups_) {
    odbstore::LocationLabels labels;
    ElementNodalRows rows;
    for (std::size_t i = 0; i < group.connectivity.size(); ++i) {
      const auto row = rowOfNode.find(group.connectivity[i]);
      if (row == rowOfNode.end()) continue;
      labels.nodes.push_back(group.connectivity[i]);
      labels.elements.push_back(group.labels[i / static_cast<std::size_t>(group.nodesPerElement)]);
      rows.gather.push_back(row->second);
    }
    if (rows.gather.empty()) continue;
    rows.location = writer_.addLocation({kInstance, odbstore::Position::elementNodal, group.type, 0, ""}, labels);
    elementNodal_->push_back(std::move(rows));
  }
  return *elementNodal_;
}

void Model::addNodes(const FrdNodes& nodes) {
  writer_.addNodes(kInstance, nodes.labels, nodes.coordinates);
  nodes_.insert(nodes.labels.begin(), nodes.labels.end());
}

void Model::addElements(const FrdElements& elements) {
  std::map<std::string, std::size_t> groupOfType;
  for (const FrdElementGroup& source : elements.groups) {
    const auto width = static_cast<std::size_t>(source.nodesPerElement);
    for (std::size_t i = 0; i < source.labels.size(); ++i) {
      const std::string type = typeName(deck_, source.labels[i], source.code, source.nodesPerElement);
      const auto [known, isNew] = groupOfType.emplace(type, groups_.size());
      if (isNew) groups_.push_back({type, source.nodesPerElement, {}, {}});
      ElementGroup& group = groups_[known->second];
      group.labels.push_back(source.labels[i]);
      const auto first = source.connectivity.begin() + static_cast<std::ptrdiff_t>(i * width);
      group.connectivity.insert(group.connectivity.end(), first, first + source.nodesPerElement);
      elements_.insert(source.labels[i]);
    }
  }
  for (const ElementGroup& group : groups_) {
    writer_.addElements(kInstance, group.type, group.labels, group.connectivity);
  }
}

void Model::addSetsOf(odbstore::SetKind kind, const std::map<std::string, DeckSet>& sets,
                      const std::unordered_set<int>& known, const std::string& deckPath, const WarningSink& warn) {
  std::vector<std::string> strangers;
  for (const auto& [canonical, set] : sets) {
    std::vector<odbstore::SetMembers> members;
    if (!set.labels.empty()) members.push_back({kInstance, set.labels});
    writer_.addSet({}, kind, set.name, members);
    const bool matches = std::any_of(set.labels.begin(), set.labels.end(), [&](int l) { return known.contains(l); });
    if (!set.labels.empty() && !known.empty() && !matches) strangers.push_back(set.name);
  }
  if (strangers.empty()) return;
  warn(
      fmt::format("{}: warning: no {} of the results is in {}; shells and beams are written as solids with new node "
                  "labels unless the deck asks for OUTPUT=2D",
                  deckPath, kind == odbstore::SetKind::node ? "node" : "element", fmt::join(strangers, ", ")));
}

void Model::addSets(const std::string& deckPath, const WarningSink& warn) {
  addSetsOf(odbstore::SetKind::node, deck_.nodeSets, nodes_, deckPath, warn);
  addSetsOf(odbstore::SetKind::element, deck_.elementSets, elements_, deckPath, warn);
}

RowPlaces& Model::placesOf(const std::vector<int>& labels) {
  auto found = std::find_if(places_.begin(), places_.end(), [&](const auto& p) { return p->labels() == labels; });
  if (found == places_.end()) {
    if (places_.size() == kKeptPlaces) places_.pop_back();
    places_.push_back(std::make_unique<RowPlaces>(labels, groups_, writer_));
    found = places_.end() - 1;
  }
  std::rotate(places_.begin(), found, found + 1);
  return *places_.front();
}

}  // namespace importers::calculix
