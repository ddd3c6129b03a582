#include "importers/calculix/expansion.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

#include "importers/calculix/deck/element_faces.h"
#include "importers/calculix/deck/section_of_elements.h"
#include "importers/input/last_places.h"

namespace importers::calculix {

namespace {

using elements::Shape;

// Type codes of solids in the result file, and what a deck calls such an element.
constexpr int kBrick8 = 1;
constexpr int kWedge6 = 2;
constexpr int kBrick20 = 4;
constexpr int kWedge15 = 5;

// 0 for a shape that is expanded into nothing.
int codeOfExpanded(Shape shape) {
  switch (shape) {
    case Shape::triangle3:
      return kWedge6;
    case Shape::triangle6:
      return kWedge15;
    case Shape::quadrilateral4:
    case Shape::line2:
      return kBrick8;
    case Shape::quadrilateral8:
    case Shape::line3:
      return kBrick20;
    default:
      return 0;
  }
}

ElementKind kindOfSolid(int code) {
  switch (code) {
    case kBrick8:
      return elementKind("C3D8");
    case kWedge6:
      return elementKind("C3D6");
    case kBrick20:
      return elementKind("C3D20");
    default:
      return elementKind("C3D15");
  }
}

void bringInOrder(std::vector<std::pair<int, int>>& pairs) {
  std::sort(pairs.begin(), pairs.end());
  pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
}

std::vector<int> secondsOf(const std::vector<std::pair<int, int>>& pairs, int first) {
  std::vector<int> seconds;
  const auto before = [](const std::pair<int, int>& pair, int label) { return pair.first < label; };
  for (auto at = std::lower_bound(pairs.begin(), pairs.end(), first, before); at != pairs.end() && at->first == first;
       ++at) {
    seconds.push_back(at->second);
  }
  return seconds;
}

}  // namespace

std::vector<int> nodesOfExpanded(const ElementKind& kind) {
  if (!kind.shape) return {};
  // The lower face of a shell, then its upper one; then middles of lower and of upper edges, then those between them.
  const auto ofSurface = [](int corners, bool hasMiddles) {
    std::vector<int> nodes;
    for (const int from : hasMiddles ? std::vector{0, 0, corners, corners, 0} : std::vector{0, 0}) {
      for (int i = 0; i < corners; ++i) nodes.push_back(from + i);
    }
    return nodes;
  };
  switch (*kind.shape) {
    case Shape::triangle3:
      return ofSurface(3, false);
    case Shape::triangle6:
      return ofSurface(3, true);
    case Shape::quadrilateral4:
      return ofSurface(4, false);
    case Shape::quadrilateral8:
      return ofSurface(4, true);
    case Shape::line2:
      return {0, 1, 1, 0, 0, 1, 1, 0};
    case Shape::line3:
      return {0, 2, 2, 0, 0, 2, 2, 0, 1, 2, 1, 0, 1, 2, 1, 0, 0, 2, 2, 0};
    default:
      return {};
  }
}

// Finds what one expansion holds.
class Expansion::Finder {
 public:
  Finder(const Deck& deck, const FrdElements& elements, Expansion& found)
      : deck_(deck), elements_(deck.mesh.elementLabels), kinds_(kindsOfTypes(deck.mesh)), found_(found) {
    for (const ElementKind& kind : kinds_) patterns_.push_back(nodesOfExpanded(kind));
    for (const FrdElementGroup& group : elements.groups) {
      if (isSolid(group.code)) groups_.push_back({&group, base::LabelIndex(group.labels)});
    }
  }

  void run() {
    for (const auto& [group, index] : groups_) addOwn(*group);
    addLayers();
    bringInOrder(found_.nodes_);
    found_.nodes_.shrink_to_fit();
    for (const auto& [name, set] : deck_.nodeSets) addFaces(set);
  }

 private:
  // Pairs come many times, once for each element at a node: they are thinned out before they take more room than this.
  static constexpr std::size_t kFewPairs = 1U << 20;

  static bool isSolid(int code) { return code == kBrick8 || code == kWedge6 || code == kBrick20 || code == kWedge15; }

  std::size_t typeOf(std::size_t element) const { return static_cast<std::size_t>(deck_.mesh.typeOfElement[element]); }

  bool isExpansion(int code, std::size_t element) const {
    const ElementKind& kind = kinds_[typeOf(element)];
    return kind.shape && codeOfExpanded(*kind.shape) == code &&
           deck_.mesh.nodesOf(element).size() >= static_cast<std::size_t>(kind.nodes);
  }

  void addNodes(const Solid& solid, std::size_t element) {
    const std::span<const int> own = deck_.mesh.nodesOf(element);
    const std::vector<int>& pattern = patterns_[typeOf(element)];
    const auto width = static_cast<std::size_t>(solid.group->nodesPerElement);
    for (std::size_t k = 0; k < width; ++k) {
      const int node = solid.group->connectivity[solid.place * width + k];
      found_.nodes_.emplace_back(own[static_cast<std::size_t>(pattern[k])], node);
    }
    if (found_.nodes_.size() < fullAt_) return;
    bringInOrder(found_.nodes_);
    fullAt_ = 2 * found_.nodes_.size() + kFewPairs;
  }

  // Solids under the labels of the deck's elements.
  void addOwn(const FrdElementGroup& group) {
    for (std::size_t i = 0; i < group.labels.size(); ++i) {
      const int element = elements_.placeOf(group.labels[i]);
      if (element < 0 || !isExpansion(group.code, static_cast<std::size_t>(element))) continue;
      addNodes({&group, i}, static_cast<std::size_t>(element));
    }
  }

  // Elements with layers and their number, by their labels.
  std::map<int, std::size_t> layeredElements() const {
    std::map<int, std::size_t> layers;
    const auto isComposite = [](const DeckSection& section) { return section.isComposite; };
    if (std::none_of(deck_.sections.begin(), deck_.sections.end(), isComposite)) return layers;
    const std::vector<int> sections = sectionOfElements(deck_, elements_, kinds_);
    for (std::size_t i = 0; i < sections.size(); ++i) {
      if (sections[i] == kNoSection) continue;
      const DeckSection& section = deck_.sections[static_cast<std::size_t>(sections[i])];
      if (section.isComposite) layers[deck_.mesh.elementLabels[i]] = section.layers.size();
    }
    return layers;
  }

  // Solids with labels that the deck does not have, in the order of their labels.
  std::map<int, Solid> newSolids() const {
    std::map<int, Solid> solids;
    const std::vector<int>& labels = deck_.mesh.elementLabels;
    const int highest = labels.empty() ? 0 : *std::max_element(labels.begin(), labels.end());
    for (const auto& [group, index] : groups_) {
      for (std::size_t i = 0; i < group->labels.size(); ++i) {
        if (group->labels[i] > highest) solids[group->labels[i]] = {group, i};
      }
    }
    return solids;
  }

  void addLayers() {
    const std::map<int, std::size_t> layered = layeredElements();
    std::size_t expected = 0;
    for (const auto& [element, layers] : layered) expected += layers;
    if (expected == 0) return;
    const std::map<int, Solid> solids = newSolids();
    if (solids.size() != expected) return;
    auto solid = solids.begin();
    for (const auto& [label, layers] : layered) {
      const auto element = static_cast<std::size_t>(elements_.placeOf(label));
      for (std::size_t layer = 0; layer < layers; ++layer, ++solid) {
        if (!isExpansion(solid->second.group->code, element)) continue;
        addNodes(solid->second, element);
        found_.elements_.emplace_back(label, solid->first);
      }
    }
  }

  // The solids that an element has become, from its lower side up.
  std::vector<Solid> solidsOf(int element) const {
    std::vector<int> labels = found_.elementsOf(element);
    if (labels.empty()) labels = {element};
    std::vector<Solid> solids;
    for (const int label : labels) {
      for (const auto& [group, index] : groups_) {
        if (const int place = index.placeOf(label); place >= 0) {
          solids.push_back({group, static_cast<std::size_t>(place)});
        }
      }
    }
    return solids;
  }

  void addFace(const Solid& solid, int face, std::vector<int>& nodes) const {
    const auto places = nodesOfFace(kindOfSolid(solid.group->code), "S" + std::to_string(face));
    if (!places) return;
    const auto width = static_cast<std::size_t>(solid.group->nodesPerElement);
    for (const std::size_t place : *places) nodes.push_back(solid.group->connectivity[solid.place * width + place]);
  }

  void addFaces(const DeckSet& set) {
    std::vector<int> nodes;
    for (const DeckFace& face : set.faces) {
      std::vector<Solid> solids = solidsOf(face.element);
      if (solids.empty()) continue;
      // Only the outer layers have the sides of a shell.
      if (face.face == 1) solids = {solids.front()};
      if (face.face == 2) solids = {solids.back()};
      for (const Solid& solid : solids) addFace(solid, face.face, nodes);
    }
    if (!nodes.empty()) found_.nodesOfFaces_.emplace(&set, std::move(nodes));
  }

  const Deck& deck_;
  LastPlaces elements_;
  std::vector<ElementKind> kinds_;          // of the deck's types
  std::vector<std::vector<int>> patterns_;  // of the deck's types
  std::vector<std::pair<const FrdElementGroup*, base::LabelIndex>> groups_;
  Expansion& found_;
  std::size_t fullAt_ = kFewPairs;
};

Expansion::Expansion(const Deck& deck, const FrdElements& elements) {
  const std::vector<std::string>& types = deck.mesh.elementTypes;
  const bool mayExpand = std::any_of(
      types.begin(), types.end(), [](const std::string& type) { return !nodesOfExpanded(elementKind(type)).empty(); });
  if (mayExpand) Finder(deck, elements, *this).run();
}

std::vector<int> Expansion::nodesOf(int node) const { return secondsOf(nodes_, node); }

std::vector<int> Expansion::elementsOf(int element) const { return secondsOf(elements_, element); }

std::vector<int> Expansion::membersOf(const DeckSet& set) const {
  if (nodes_.empty()) return set.labels;
  std::vector<int> members = set.labels;
  if (set.origin == DeckSetOrigin::surfaceOfFaces && set.kind == odbstore::SetKind::node) {
    const auto nodes = nodesOfFaces_.find(&set);
    if (nodes != nodesOfFaces_.end()) members.insert(members.end(), nodes->second.begin(), nodes->second.end());
  } else {
    const Pairs& pairs = set.kind == odbstore::SetKind::node ? nodes_ : elements_;
    for (const int label : set.labels) {
      const std::vector<int> others = secondsOf(pairs, label);
      members.insert(members.end(), others.begin(), others.end());
    }
  }
  std::sort(members.begin(), members.end());
  members.erase(std::unique(members.begin(), members.end()), members.end());
  return members;
}

}  // namespace importers::calculix
