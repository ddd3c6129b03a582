#include "importers/calculix/mass_properties.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "importers/calculix/element_kinds.h"
#include "importers/last_places.h"
#include "importers/mass/cross_section.h"
#include "importers/mass/element_integration.h"
#include "importers/mass/moments.h"

namespace importers::calculix {

namespace {

using mass::Vector3;

// Why a mass cannot be told, and where in the deck that is to be seen.
struct Unknown {
  std::string place;
  std::string reason;
};

// What a section gives to each of its elements, made once.
struct ReadySection {
  bool isReady = false;
  double density = 0.0;  // of all but layers
  std::vector<mass::Layer> layers;
  mass::CrossSection profile;
};

bool hasExtent(Family family) { return family != Family::massless && family != Family::point; }

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

[[noreturn]] void fail(const DeckSection& section, const std::string& reason) {
  throw Unknown{section.place, fmt::format("the section of {} {}", section.elementSet, reason)};
}

// The profile of a beam, and how large it is along its directions.
mass::CrossSection profileOf(const DeckSection& section) {
  const std::vector<double>& d = section.dimensions;
  const auto require = [&](std::size_t count) {
    if (d.size() < count) fail(section, "lacks dimensions");
  };
  require(1);
  // A second side that is not given is as long as the first.
  double a = d[0];
  double b = d.size() > 1 ? d[1] : a;
  mass::CrossSection profile;
  if (section.profile == "RECT") {
    profile = mass::rectangle(a, b);
  } else if (section.profile == "CIRC") {
    profile = mass::ellipse(a, b);
  } else if (section.profile == "PIPE") {
    require(2);
    profile = mass::pipe(d[0], d[1]);
    a = b = 2 * d[0];
  } else if (section.profile == "BOX") {
    require(6);
    profile = mass::box(a, b, {d[2], d[3], d[4], d[5]});
  } else if (section.profile == "GENERAL") {
    require(4);
    profile = mass::generalSection(d[0], d[1], d[3], d[2]);
    a = b = 0.0;
  } else {
    fail(section, fmt::format("is of the kind \"{}\", which is not known", section.profile));
  }
  return mass::shifted(std::move(profile), -section.offset[0] * a, -section.offset[1] * b);
}

class MassOfDeck {
 public:
  MassOfDeck(const Deck& deck, const WarningSink& warn)
      : deck_(deck),
        warn_(warn),
        nodes_(deck.mesh.nodeLabels),
        elements_(deck.mesh.elementLabels),
        sectionOf_(deck.mesh.elementLabels.size(), kNone),
        ready_(deck.sections.size()),
        moments_(deck.mesh.coordinates.empty() ? Vector3{} : deck.mesh.coordinates.front()) {
    for (const std::string& type : deck.mesh.elementTypes) kinds_.push_back(elementKind(type));
  }

  std::optional<StepMass> run() {
    if (!isAsked()) return std::nullopt;
    assignSections();
    for (std::size_t i = 0; i < deck_.mesh.elementLabels.size(); ++i) {
      if (elements_.placeOf(deck_.mesh.elementLabels[i]) == static_cast<int>(i)) addElement(i);
    }
    if (moments_.mass() <= 0.0) return std::nullopt;
    return StepMass{moments_.mass(), moments_.centre(), moments_.inertiaAboutCentre(), moments_.inertiaAboutOrigin()};
  }

 private:
  static constexpr int kNone = -1;

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

  void assignSections() {
    for (std::size_t s = 0; s < deck_.sections.size(); ++s) {
      const auto set = deck_.elementSets.find(canonicalName(deck_.sections[s].elementSet));
      if (set == deck_.elementSets.end()) continue;
      for (const int label : set->second.labels) {
        const int element = elements_.placeOf(label);
        if (element < 0) continue;
        const auto place = static_cast<std::size_t>(element);
        if (isMadeBy(kindOf(place).family, deck_.sections[s].kind)) sectionOf_[place] = static_cast<int>(s);
      }
    }
  }

  [[noreturn]] void failWithoutSection(std::size_t element) const {
    const int label = deck_.mesh.elementLabels[element];
    const std::string& type = deck_.mesh.elementTypes[static_cast<std::size_t>(deck_.mesh.typeOfElement[element])];
    const char* const what =
        kindOf(element).family == Family::unknown ? "have a type of unknown mass" : "have no section";
    for (const auto& [name, set] : deck_.elementSets) {
      if (std::binary_search(set.labels.begin(), set.labels.end(), label)) {
        throw Unknown{set.place, fmt::format("elements of {} ({} {}) {}", set.names.front(), type, label, what)};
      }
    }
    throw Unknown{"", fmt::format("elements in no set ({} {}) {}", type, label, what)};
  }

  double densityOf(const std::string& material, const DeckSection& section) {
    const auto known = deck_.materials.find(material);
    if (known == deck_.materials.end())
      fail(section, fmt::format("has the material \"{}\", which is not known", material));
    if (!known->second.density) fail(section, fmt::format("has the material {} without a density", known->second.name));
    const std::string& second = known->second.placeOfSecondDensity;
    if (!second.empty() && warnedOf_.insert(material).second) {
      warn_(fmt::format("{}: warning: the density of {} depends on temperature; masses are made with the first one",
                        second, known->second.name));
    }
    return *known->second.density;
  }

  std::vector<mass::Layer> layersOf(const DeckSection& section) {
    if (section.layers.empty()) fail(section, "has no thickness");
    double all = 0.0;
    for (const DeckLayer& layer : section.layers) all += layer.thickness;
    double height = -all * (0.5 + section.offset[0]);
    std::vector<mass::Layer> layers;
    for (const DeckLayer& layer : section.layers) {
      layers.push_back({height, height + layer.thickness, densityOf(layer.material, section)});
      height += layer.thickness;
    }
    return layers;
  }

  const ReadySection& ready(std::size_t s) {
    const DeckSection& section = deck_.sections[s];
    ReadySection& ready = ready_[s];
    if (std::exchange(ready.isReady, true)) return ready;
    if (section.hasNodalThickness) fail(section, "has a thickness of its own at each node, which is not supported");
    if (section.kind == SectionKind::shell) {
      ready.layers = layersOf(section);
    } else if (section.kind != SectionKind::pointMass) {
      ready.density = densityOf(section.material, section);
    }
    if (section.kind == SectionKind::beam) ready.profile = profileOf(section);
    if (section.kind == SectionKind::solid && section.size) ready.profile = mass::square(*section.size);
    return ready;
  }

  std::span<const Vector3> nodesOf(std::size_t element) {
    const std::span<const int> labels = deck_.mesh.nodesOf(element);
    const auto count = static_cast<std::size_t>(kindOf(element).nodes);
    const int label = deck_.mesh.elementLabels[element];
    if (labels.size() < count) throw Unknown{"", fmt::format("the element {} has too few nodes", label)};
    for (std::size_t k = 0; k < count; ++k) {
      const int place = nodes_.placeOf(labels[k]);
      if (place < 0) throw Unknown{"", fmt::format("the node {} of the element {} is not there", labels[k], label)};
      corners_[k] = deck_.mesh.coordinates[static_cast<std::size_t>(place)];
    }
    return std::span(corners_).first(count);
  }

  void addElement(std::size_t element) {
    const ElementKind& kind = kindOf(element);
    if (kind.family == Family::massless) return;
    if (sectionOf_[element] == kNone) failWithoutSection(element);
    const auto s = static_cast<std::size_t>(sectionOf_[element]);
    const DeckSection& section = deck_.sections[s];
    const ReadySection& made = ready(s);
    const std::span<const Vector3> nodes = nodesOf(element);
    switch (kind.family) {
      case Family::point:
        if (!section.size) fail(section, "has no mass");
        moments_.add(*section.size, nodes.front());
        break;
      case Family::solid:
        mass::addSolid(moments_, *kind.shape, nodes, made.density);
        break;
      case Family::shell:
      case Family::membrane:
        mass::addShell(moments_, *kind.shape, nodes, made.layers);
        break;
      case Family::plane:
        mass::addPlane(moments_, *kind.shape, nodes, section.size.value_or(1.0), made.density);
        break;
      case Family::axisymmetric:
        mass::addAxisymmetric(moments_, *kind.shape, nodes, made.density);
        break;
      case Family::beam:
        mass::addBeam(moments_, *kind.shape, nodes, made.profile, section.direction, made.density);
        break;
      case Family::truss:
        if (!section.size) fail(section, "has no area");
        mass::addBeam(moments_, *kind.shape, nodes, made.profile, {}, made.density);
        break;
      case Family::unknown:
      case Family::massless:
        break;
    }
  }

  const Deck& deck_;
  const WarningSink& warn_;
  LastPlaces nodes_;
  LastPlaces elements_;
  std::vector<int> sectionOf_;  // places in the deck's sections
  std::vector<ReadySection> ready_;
  std::vector<ElementKind> kinds_;  // of the deck's types
  std::set<std::string> warnedOf_;  // materials
  std::array<Vector3, mass::kMostNodes> corners_{};
  mass::Moments moments_;
};

}  // namespace

std::optional<StepMass> massOf(const Deck& deck, const WarningSink& warn) {
  try {
    return MassOfDeck(deck, warn).run();
  } catch (const Unknown& unknown) {
    const std::string place = unknown.place.empty() ? std::string() : unknown.place + ": ";
    warn(fmt::format("{}warning: {}, so the steps have no mass", place, unknown.reason));
    return std::nullopt;
  }
}

}  // namespace importers::calculix
