#include "importers/calculix/deck_surfaces.h"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <span>
#include <utility>

#include "importers/calculix/element_faces.h"
#include "importers/last_places.h"
#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

using Sets = std::map<std::string, DeckSet>;

// The sets that surfaces make among those of one kind.
class NewSets {
 public:
  explicit NewSets(const Sets& ofDeck) : ofDeck_(ofDeck) {}

  // A new one, or that of the surface when it is opened again.
  DeckSet& open(const std::string& surface, const std::string& place) {
    std::string name = surface;
    while (ofDeck_.contains(canonicalName(name))) name += kSurfaceSuffix;
    DeckSet& set = made_[canonicalName(name)];
    if (set.names.empty()) set.place = place;
    set.addName(name);
    return set;
  }

  void moveInto(Sets& sets) {
    for (auto& [name, set] : made_) set.finish();
    sets.merge(made_);
  }

 private:
  const Sets& ofDeck_;
  Sets made_;
};

// The nodes of faces of the deck's elements.
class FaceNodes {
 public:
  explicit FaceNodes(const DeckMesh& mesh) : mesh_(mesh), elements_(mesh.elementLabels) {
    for (const std::string& type : mesh.elementTypes) kinds_.push_back(elementKind(type));
  }

  // Adds those of one face of all the elements; false where an element has no such face. Elements that are not there
  // have none.
  bool collect(const std::vector<int>& elements, const std::string& face, std::vector<int>& nodes) const {
    bool isKnown = true;
    for (const int label : elements) {
      const int place = elements_.placeOf(label);
      if (place >= 0 && !collect(static_cast<std::size_t>(place), face, nodes)) isKnown = false;
    }
    return isKnown;
  }

 private:
  bool collect(std::size_t element, const std::string& face, std::vector<int>& nodes) const {
    const auto type = static_cast<std::size_t>(mesh_.typeOfElement[element]);
    const std::optional<std::vector<std::size_t>> places = nodesOfFace(kinds_[type], face);
    if (!places) return false;
    const std::span<const int> all = mesh_.nodesOf(element);
    for (const std::size_t place : *places) {
      if (place < all.size()) nodes.push_back(all[place]);
    }
    return true;
  }

  const DeckMesh& mesh_;
  LastPlaces elements_;
  std::vector<ElementKind> kinds_;
};

}  // namespace

void DeckSurfaces::start(const Keyword& keyword, const LineReader& lines) {
  const std::optional<std::string> name = keyword.value("NAME");
  if (!name || canonicalName(*name).empty()) lines.fail("*SURFACE has no name");
  surfaces_.push_back({storableText(*name),
                       placeIn(lines.path(), lines.lineNumber()),
                       upperCased(keyword.value("TYPE").value_or("")) == "NODE",
                       {}});
}

void DeckSurfaces::takeData(std::string_view line, const LineReader& lines) {
  const std::vector<std::string_view> items = dataItems(line);
  if (items.front().empty()) return;
  surfaces_.back().parts.push_back({placeIn(lines.path(), lines.lineNumber()), std::string(items[0]),
                                    items.size() > 1 ? canonicalName(items[1]) : std::string()});
}

// Surfaces take in sets of the deck, not those of other surfaces.
std::vector<int> DeckSurfaces::membersOf(const Part& part, const Sets& sets, const WarningSink& warn) {
  if (const std::optional<int> label = integerFrom(part.member)) return {*label};
  const auto set = sets.find(canonicalName(part.member));
  if (set != sets.end()) return set->second.labels;
  warn(fmt::format("{}: warning: a surface takes in {}, which is no set", part.place, storableText(part.member)));
  return {};
}

void DeckSurfaces::addSets(Deck& deck, const WarningSink& warn) const {
  if (surfaces_.empty()) return;
  const FaceNodes faces(deck.mesh);
  NewSets nodeSets(deck.nodeSets);
  NewSets elementSets(deck.elementSets);
  for (const Surface& surface : surfaces_) {
    DeckSet& nodes = nodeSets.open(surface.name, surface.place);
    DeckSet* const elements = surface.isOfNodes ? nullptr : &elementSets.open(surface.name, surface.place);
    for (const Part& part : surface.parts) {
      const std::vector<int> members = membersOf(part, elements != nullptr ? deck.elementSets : deck.nodeSets, warn);
      std::vector<int>& to = elements != nullptr ? elements->labels : nodes.labels;
      to.insert(to.end(), members.begin(), members.end());
      if (elements != nullptr && !faces.collect(members, part.face, nodes.labels)) {
        warn(fmt::format("{}: warning: the surface {} has faces \"{}\" of elements without such faces", part.place,
                         surface.name, storableText(part.face)));
      }
    }
  }
  nodeSets.moveInto(deck.nodeSets);
  elementSets.moveInto(deck.elementSets);
}

}  // namespace importers::calculix
