#include "importers/calculix/deck/section_of_elements.h"

#include <set>
#include <string>
#include <utility>

namespace importers::calculix {

namespace {

bool isMadeBy(Family family, SectionKind kind) {
  switch (family) {
    case Family::point:
      return kind == SectionKind::pointMass;
    case Family::shell:
    case Family::membrane:
      return kind == SectionKind::shell;
    case Family::beam:
      return kind == SectionKind::beam;
    case Family::unknown:
    case Family::massless:
      return false;
    default:
      return kind == SectionKind::solid;
  }
}

}  // namespace

std::vector<ElementKind> kindsOfTypes(const DeckMesh& mesh) {
  std::vector<ElementKind> kinds;
  for (const std::string& type : mesh.elementTypes) kinds.push_back(elementKind(type));
  return kinds;
}

std::vector<int> sectionOfElements(const Deck& deck, const LastPlaces& elements,
                                   const std::vector<ElementKind>& kinds) {
  std::vector<int> sections(deck.mesh.elementLabels.size(), kNoSection);
  // From the last section on: what an earlier one says of the same set is hidden, and would cost time again.
  std::set<std::pair<std::string, SectionKind>> seen;
  for (std::size_t s = deck.sections.size(); s-- > 0;) {
    const DeckSection& section = deck.sections[s];
    const auto set = deck.elementSets.find(section.elementSet);
    if (set == deck.elementSets.end() || !seen.emplace(section.elementSet, section.kind).second) continue;
    for (const int label : set->second.labels) {
      const int place = elements.placeOf(label);
      if (place < 0) continue;
      const auto type = static_cast<std::size_t>(deck.mesh.typeOfElement[static_cast<std::size_t>(place)]);
      int& known = sections[static_cast<std::size_t>(place)];
      if (known == kNoSection && isMadeBy(kinds[type].family, section.kind)) known = static_cast<int>(s);
    }
  }
  return sections;
}

}  // namespace importers::calculix
