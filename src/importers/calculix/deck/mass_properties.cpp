#include "importers/calculix/deck/mass_properties.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <string>
#include <vector>

#include "elements/element_integration.h"
#include "elements/moments.h"
#include "importers/calculix/deck/element_kinds.h"
#include "importers/calculix/deck/section_masses.h"
#include "importers/calculix/deck/section_of_elements.h"
#include "importers/input/last_places.h"

namespace importers::calculix {

namespace {

using elements::Vector3;

bool hasExtent(Family family) { return family != Family::massless && family != Family::point; }

class MassOfDeck {
 public:
  MassOfDeck(const Deck& deck, const WarningSink& warn)
      : deck_(deck),
        nodes_(deck.mesh.nodeLabels),
        elements_(deck.mesh.elementLabels),
        kinds_(kindsOfTypes(deck.mesh)),
        sections_(deck, warn),
        moments_(deck.mesh.coordinates.empty() ? Vector3{} : deck.mesh.coordinates.front()) {}

  std::optional<StepMass> run() {
    if (!isAsked()) return std::nullopt;
    if (!deck_.mesh.isWhole() && !deck_.mesh.elementLabels.empty()) {
      throw UnknownMass{deck_.mesh.placeOfMissing, "a part of the mesh is not in the deck"};
    }
    sectionOf_ = sectionOfElements(deck_, elements_, kinds_);
    for (std::size_t i = 0; i < deck_.mesh.elementLabels.size(); ++i) {
      if (elements_.placeOf(deck_.mesh.elementLabels[i]) == static_cast<int>(i)) addElement(i);
    }
    if (!(moments_.mass() > 0.0) || !std::isfinite(moments_.mass())) return std::nullopt;
    return StepMass{moments_.mass(), moments_.centre(), moments_.inertiaAboutCentre(), moments_.inertiaAboutOrigin()};
  }

 private:
  const ElementKind& kindOf(std::size_t element) const {
    return kinds_[static_cast<std::size_t>(deck_.mesh.typeOfElement[element])];
  }

  // Whether the deck gives masses at all.
  bool isAsked() const {
    const auto& materials = deck_.materials;
    if (std::any_of(materials.begin(), materials.end(), [](const auto& m) { return m.second.density.has_value(); })) {
      return true;
    }
    return std::none_of(deck_.mesh.typeOfElement.begin(), deck_.mesh.typeOfElement.end(),
                        [this](int type) { return hasExtent(kinds_[static_cast<std::size_t>(type)].family); });
  }

  [[noreturn]] void failWithoutSection(std::size_t element) const {
    const int label = deck_.mesh.elementLabels[element];
    const std::string& type = deck_.mesh.elementTypes[static_cast<std::size_t>(deck_.mesh.typeOfElement[element])];
    const char* const what =
        kindOf(element).family == Family::unknown ? "have a type of unknown mass" : "have no section";
    for (const auto& [name, set] : deck_.elementSets) {
      if (std::binary_search(set.labels.begin(), set.labels.end(), label)) {
        throw UnknownMass{set.place, fmt::format("elements of {} ({} {}) {}", set.names.front(), type, label, what)};
      }
    }
    throw UnknownMass{{}, fmt::format("elements in no set ({} {}) {}", type, label, what)};
  }

  std::span<const Vector3> nodesOf(std::size_t element) {
    const std::span<const int> labels = deck_.mesh.nodesOf(element);
    const auto count = static_cast<std::size_t>(kindOf(element).nodes);
    const int label = deck_.mesh.elementLabels[element];
    if (labels.size() < count) throw UnknownMass{{}, fmt::format("the element {} has too few nodes", label)};
    for (std::size_t k = 0; k < count; ++k) {
      const int place = nodes_.placeOf(labels[k]);
      if (place < 0)
        throw UnknownMass{{}, fmt::format("the node {} of the element {} does not exist", labels[k], label)};
      corners_[k] = deck_.mesh.coordinates[static_cast<std::size_t>(place)];
    }
    return std::span(corners_).first(count);
  }

  // Of the nodes of an element; empty if they are all those of its section.
  std::span<const std::array<double, 2>> thicknessesOf(std::size_t element, const DeckSection& section) {
    if (!section.hasNodalThickness) return {};
    const auto labels = deck_.mesh.nodesOf(element).first(static_cast<std::size_t>(kindOf(element).nodes));
    std::size_t k = 0;
    for (const int label : labels) thicknesses_[k++] = sections_.thicknessAt(label, section);
    return std::span(thicknesses_).first(k);
  }

  void addElement(std::size_t element) {
    const ElementKind& kind = kindOf(element);
    if (kind.family == Family::massless) return;
    if (sectionOf_[element] == kNoSection) failWithoutSection(element);
    const auto s = static_cast<std::size_t>(sectionOf_[element]);
    const DeckSection& section = deck_.sections[s];
    const SectionMass& made = sections_.of(s);
    const std::span<const Vector3> nodes = nodesOf(element);
    switch (kind.family) {
      case Family::point:
        if (!section.size) failFor(section, "has no mass");
        moments_.add(*section.size, nodes.front());
        break;
      case Family::solid:
        elements::addSolid(moments_, *kind.shape, nodes, made.density);
        break;
      case Family::shell:
      case Family::membrane:
        elements::addShell(moments_, *kind.shape, nodes, made.layers, thicknessesOf(element, section));
        break;
      case Family::plane:
        elements::addPlane(moments_, *kind.shape, nodes, section.size.value_or(1.0), made.density);
        break;
      case Family::axisymmetric:
        elements::addAxisymmetric(moments_, *kind.shape, nodes, made.density);
        break;
      case Family::beam:
        elements::addBeam(moments_, *kind.shape, nodes, made.profile, section.direction, made.density,
                          thicknessesOf(element, section));
        break;
      case Family::truss:
        if (!section.size) failFor(section, "has no area");
        elements::addBeam(moments_, *kind.shape, nodes, made.profile, {}, made.density);
        break;
      case Family::unknown:
      case Family::massless:
        break;
    }
  }

  const Deck& deck_;
  LastPlaces nodes_;
  LastPlaces elements_;
  std::vector<ElementKind> kinds_;  // of the deck's types
  std::vector<int> sectionOf_;      // places in the deck's sections
  SectionMasses sections_;
  std::array<Vector3, elements::kMostNodes> corners_{};
  std::array<std::array<double, 2>, elements::kMostNodes> thicknesses_{};
  elements::Moments moments_;
};

}  // namespace

std::optional<StepMass> massOf(const Deck& deck, const WarningSink& warn) {
  try {
    return MassOfDeck(deck, warn).run();
  } catch (const UnknownMass& unknown) {
    warn(base::warning(unknown.place, unknown.reason + ", so the steps have no mass"));
    return std::nullopt;
  }
}

}  // namespace importers::calculix
