#include "importers/calculix/deck/deck_surfaces.h"

#include <fmt/core.h>

#include <map>
#include <optional>
#include <set>
#include <span>
#include <utility>

#include "importers/calculix/deck/element_faces.h"
#include "importers/calculix/deck/section_of_elements.h"
#include "importers/input/last_places.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

using odbstore::SetKind;
using Sets = std::map<std::string, DeckSet>;

// The memory of a face: up to eight nodes and the face itself.
constexpr std::size_t kLabelsOfFace = 10;

// The sets that surfaces make, until all of them are made: surfaces take in sets of the deck, not those of surfaces.
class NewSets {
 public:
  explicit NewSets(const Deck& deck) : deck_(deck) {}

  // What the sets of a surface are called, now and when it is opened again.
  const std::string& nameFor(const std::string& surface, bool isOfNodes) {
    const auto [known, isNew] = names_.try_emplace({canonicalName(surface), isOfNodes}, canonicalName(surface));
    while (isNew && isTaken(known->second)) known->second += kSurfaceSuffix;
    taken_.insert(known->second);
    return known->second;
  }

  // The set of a kind by that name, which is new or made before.
  DeckSet& open(const std::string& canonical, SetKind kind) {
    return (kind == SetKind::node ? nodes_ : elements_)[canonical];
  }

  void moveInto(Deck& deck) {
    for (auto& [name, set] : nodes_) set.finish();
    for (auto& [name, set] : elements_) set.finish();
    deck.nodeSets.merge(nodes_);
    deck.elementSets.merge(elements_);
    for (const auto& [surface, name] : names_) deck.setsOfSurfaces.emplace(surface.first, name);
  }

 private:
  bool isTaken(const std::string& canonical) const {
    return deck_.nodeSets.contains(canonical) || deck_.elementSets.contains(canonical) || taken_.contains(canonical);
  }

  const Deck& deck_;
  std::map<std::pair<std::string, bool>, std::string> names_;  // by the canonical name of a surface and what it is of
  std::set<std::string> taken_;
  Sets nodes_;
  Sets elements_;
};

// The nodes of faces of the deck's elements.
class FaceNodes {
 public:
  explicit FaceNodes(const DeckMesh& mesh) : mesh_(mesh), elements_(mesh.elementLabels), kinds_(kindsOfTypes(mesh)) {}

  // Adds those of one face of all the elements to a set; false if an element has no such face. Elements that are not
  // there have none.
  bool collect(const std::vector<int>& elements, const std::string& face, DeckSet& set) const {
    bool isKnown = true;
    for (const int label : elements) {
      const int place = elements_.placeOf(label);
      if (place >= 0 && !collect(static_cast<std::size_t>(place), face, set)) isKnown = false;
    }
    return isKnown;
  }

 private:
  bool collect(std::size_t element, const std::string& face, DeckSet& set) const {
    const ElementKind& kind = kinds_[static_cast<std::size_t>(mesh_.typeOfElement[element])];
    const std::optional<std::vector<std::size_t>> places = nodesOfFace(kind, face);
    if (!places) return false;
    const std::span<const int> all = mesh_.nodesOf(element);
    for (const std::size_t place : *places) {
      if (place < all.size()) set.labels.push_back(all[place]);
    }
    const int ofSolid = faceOfExpanded(kind, face);
    if (ofSolid > 0) set.faces.push_back({mesh_.elementLabels[element], ofSolid});
    return true;
  }

  const DeckMesh& mesh_;
  LastPlaces elements_;
  std::vector<ElementKind> kinds_;
};

struct SetOfSurface {
  DeckSetOrigin origin;
  std::string name;
  SourcePlace place;
};

// Says what a set is; its first mention counts for all but the name.
void describe(DeckSet& set, SetKind kind, const SetOfSurface& from, int order) {
  if (set.names.empty()) {
    set.kind = kind;
    set.origin = from.origin;
    set.place = from.place;
    set.order = order;
  }
  set.addName(from.name);
}

void append(std::vector<int>& to, const std::vector<int>& labels) { to.insert(to.end(), labels.begin(), labels.end()); }

}  // namespace

void DeckSurfaces::start(const Keyword& keyword, const LineReader& lines) {
  const std::optional<std::string> name = keyword.value("NAME");
  if (!name || trimmed(*name).empty()) lines.fail("*SURFACE has no name");
  surfaces_.push_back(
      {*keyword.spelled("NAME"), lines.place(), order_, upperCased(keyword.value("TYPE").value_or("")) == "NODE", {}});
  order_ += 2;  // it may make two sets
}

void DeckSurfaces::takeData(std::string_view line, const LineReader& lines) {
  const std::vector<std::string_view> items = dataItems(line);
  if (items.front().empty()) return;
  surfaces_.back().parts.push_back(
      {lines.place(), std::string(items[0]), items.size() > 1 ? canonicalName(items[1]) : std::string()});
}

std::vector<int> DeckSurfaces::membersOf(const Part& part, const Sets& sets, LabelBudget& budget,
                                         const WarningSink& warn) {
  if (const std::optional<int> label = integerFrom(part.member)) return {*label};
  const auto set = sets.find(canonicalName(part.member));
  if (set == sets.end()) {
    warn(
        base::warning(part.place, fmt::format("a surface takes in {}, which is not a set", storableText(part.member))));
    return {};
  }
  budget.take(set->second.labels.size() * kLabelsOfFace, part.place);
  return set->second.labels;
}

void DeckSurfaces::addSets(Deck& deck, LabelBudget& budget, const WarningSink& warn) const {
  if (surfaces_.empty()) return;
  const FaceNodes faces(deck.mesh);
  NewSets made(deck);
  for (const Surface& surface : surfaces_) {
    warnOfControlCharacters(surface.name, surface.place, warn);
    const std::string& canonical = made.nameFor(surface.name, surface.isOfNodes);
    const std::string suffix = canonical.substr(canonicalName(surface.name).size());
    const SetOfSurface head{surface.isOfNodes ? DeckSetOrigin::surfaceOfNodes : DeckSetOrigin::surfaceOfFaces,
                            storableText(withoutQuotes(surface.name)) + suffix, surface.place};
    DeckSet& nodes = made.open(canonical, SetKind::node);
    describe(nodes, SetKind::node, head, surface.order + 1);
    if (surface.isOfNodes) {
      for (const Part& part : surface.parts) append(nodes.labels, membersOf(part, deck.nodeSets, budget, warn));
      continue;
    }
    DeckSet& elements = made.open(canonical, SetKind::element);
    describe(elements, SetKind::element, head, surface.order);
    for (const Part& part : surface.parts) {
      const std::vector<int> members = membersOf(part, deck.elementSets, budget, warn);
      append(elements.labels, members);
      if (faces.collect(members, part.face, nodes)) continue;
      warn(base::warning(part.place, fmt::format("the surface {} has faces \"{}\" of elements without such faces",
                                                 storableText(withoutQuotes(surface.name)), storableText(part.face))));
    }
  }
  made.moveInto(deck);
}

}  // namespace importers::calculix
