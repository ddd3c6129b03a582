#include "importers/calculix/model.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "importers/calculix/deck_set_names.h"
#include "importers/calculix/element_codes.h"
#include "importers/calculix/element_kinds.h"
#include "importers/calculix/set_matches.h"

namespace importers::calculix {

namespace {

// Results come for all nodes or for a few sets again and again; more different ones are seldom in use at once.
constexpr std::size_t kKeptPlaces = 8;

}  // namespace

odbstore::LocationId RowPlaces::nodal() {
  if (!nodal_) nodal_ = writer_.addLocation({kInstance, odbstore::Position::nodal, "", 0, ""}, {labels_, {}, {}});
  return *nodal_;
}

const std::vector<ElementNodalRows>& RowPlaces::elementNodal() {
  if (!elementNodal_) findElementNodal();
  return *elementNodal_;
}

void RowPlaces::findElementNodal() {
  elementNodal_.emplace();
  const LabelIndex rowOfNode(labels_);
  std::vector<char> isUsed(labels_.size(), 0);
  for (const ElementGroup& group : groups_) {
    odbstore::LocationLabels labels;
    std::vector<int> places;
    for (std::size_t i = 0; i < group.connectivity.size(); ++i) {
      const int row = rowOfNode.placeOf(group.connectivity[i]);
      if (row < 0) continue;
      isUsed[static_cast<std::size_t>(row)] = 1;
      labels.nodes.push_back(group.connectivity[i]);
      labels.elements.push_back(group.labels[i / static_cast<std::size_t>(group.nodesPerElement)]);
      places.push_back(row);
    }
    if (places.empty()) continue;
    elementNodal_->push_back(
        {writer_.addLocation({kInstance, odbstore::Position::elementNodal, group.type, 0, ""}, labels),
         writer_.keepPlaces(places)});
  }
  looseRows_ = static_cast<std::size_t>(std::count(isUsed.begin(), isUsed.end(), 0));
}

Model::Model(const Deck& deck, const std::string& resultsPath, odbstore::Writer& writer)
    : deck_(deck), resultsPath_(resultsPath), writer_(writer), deckElements_(deck.mesh.elementLabels) {}

void Model::addNodes(const FrdNodes& nodes) {
  nodes_ = LabelIndex(nodes.labels);
  if (const auto twice = nodes_.repeated()) {
    throw ImportError(resultsPath_, nodes.line, fmt::format("the node {} is there twice", *twice));
  }
  writer_.addNodes(kInstance, nodes.labels, nodes.coordinates);
}

// The group by the deck's name for the type of an element, where it has one and the solver has not turned the element
// into another (shells and beams are written as solids).
ElementGroup& Model::groupOf(const FrdElementGroup& source, int label) {
  std::string type = elementCode(source.code).name;
  if (const int place = deckElements_.placeOf(label); place >= 0) {
    const int ofDeck = deck_.mesh.typeOfElement[static_cast<std::size_t>(place)];
    const std::string& name = deck_.mesh.elementTypes[static_cast<std::size_t>(ofDeck)];
    if (elementKind(name).nodes == source.nodesPerElement) type = name;
  }
  const auto known =
      std::find_if(groups_.rbegin(), groups_.rend(), [&](const ElementGroup& group) { return group.type == type; });
  if (known != groups_.rend()) return *known;
  groups_.push_back({type, source.nodesPerElement, {}, {}});
  return groups_.back();
}

void Model::addGroup(const FrdElementGroup& source, std::int64_t line) {
  const auto width = static_cast<std::size_t>(source.nodesPerElement);
  for (std::size_t i = 0; i < source.labels.size(); ++i) {
    ElementGroup& group = groupOf(source, source.labels[i]);
    group.labels.push_back(source.labels[i]);
    for (std::size_t k = i * width; k < (i + 1) * width; ++k) {
      const int node = source.connectivity[k];
      if (!nodes_.contains(node)) {
        throw ImportError(resultsPath_, line,
                          fmt::format("the element {} has the node {}, which is not there", source.labels[i], node));
      }
      group.connectivity.push_back(node);
    }
  }
}

void Model::addElements(const FrdElements& elements) {
  for (const FrdElementGroup& source : elements.groups) addGroup(source, elements.line);
  std::vector<int> all;
  for (const ElementGroup& group : groups_) {
    writer_.addElements(kInstance, group.type, group.labels, group.connectivity);
    firstPlaces_.push_back(static_cast<int>(all.size()));
    all.insert(all.end(), group.labels.begin(), group.labels.end());
  }
  elements_ = LabelIndex(all);
  if (const auto twice = elements_.repeated()) {
    throw ImportError(resultsPath_, elements.line, fmt::format("the element {} is there twice", *twice));
  }
  expansion_ = Expansion(deck_, elements);
  sectors_ = sectorsOf(deck_, elements);
  setWarnings_ = warningsOfUnmatchedSets(deck_, expansion_, nodes_, elements_);
}

const std::string& Model::typeOf(int element) const {
  static const std::string none;
  const int place = elements_.placeOf(element);
  if (place < 0) return none;
  const auto behind = std::upper_bound(firstPlaces_.begin(), firstPlaces_.end(), place);
  return groups_[static_cast<std::size_t>(behind - firstPlaces_.begin()) - 1].type;
}

void Model::addSets(const WarningSink& warn) {
  std::vector<const DeckSet*> all = deck_.setsInOrder();
  const std::vector<DeckSet> ofSectors = setsOfSectors(deck_, sectors_, warn);
  for (const DeckSet& set : ofSectors) all.push_back(&set);
  const std::vector<StoredSet> sets = storedSets(all);
  warnOfNames(sets, warn);
  for (const StoredSet& stored : sets) {
    std::vector<odbstore::SetMembers> members = {{kInstance, expansion_.membersOf(*stored.set)}};
    if (members.front().labels.empty()) members.clear();
    writer_.addSet({}, stored.set->kind, stored.name, members);
    ++setCount_;
  }
  for (const std::string& warning : setWarnings_) warn(warning);
}

RowPlaces& Model::placesOf(const FrdResult& block) {
  auto found = std::find_if(places_.begin(), places_.end(), [&](const auto& p) { return p->labels() == block.labels; });
  if (found == places_.end()) {
    if (const auto twice = LabelIndex(block.labels).repeated()) {
      throw ImportError(resultsPath_, block.line, fmt::format("{} has two rows for the node {}", block.name, *twice));
    }
    if (places_.size() == kKeptPlaces) places_.pop_back();
    places_.push_back(std::make_unique<RowPlaces>(block.labels, groups_, writer_));
    found = places_.end() - 1;
  }
  std::rotate(places_.begin(), found, found + 1);
  return *places_.front();
}

}  // namespace importers::calculix
