#include "importers/calculix/deck/section_masses.h"

#include <fmt/core.h>

#include <optional>
#include <utility>

#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

// The profile of a beam, and how large it is along its directions.
elements::CrossSection profileOf(const DeckSection& section) {
  // At nodes with thicknesses of their own the section is as large as they are.
  const std::vector<double> d = section.hasNodalThickness ? std::vector<double>{1.0, 1.0} : section.dimensions;
  const auto require = [&](std::size_t count) {
    if (d.size() < count) failFor(section, "lacks dimensions");
  };
  require(1);
  // A second side that is not given is as long as the first.
  double a = d[0];
  double b = d.size() > 1 ? d[1] : a;
  elements::CrossSection profile;
  if (section.profile == "RECT") {
    profile = elements::rectangle(a, b);
  } else if (section.profile == "CIRC") {
    profile = elements::ellipse(a, b);
  } else if (section.hasNodalThickness) {
    failFor(section, fmt::format("is a {} whose thickness varies from node to node", section.profile));
  } else if (section.profile == "PIPE") {
    require(2);
    profile = elements::pipe(d[0], d[1]);
    a = b = 2 * d[0];
  } else if (section.profile == "BOX") {
    require(6);
    profile = elements::box(a, b, {d[2], d[3], d[4], d[5]});
  } else if (section.profile == "GENERAL") {
    require(4);
    // Area, I11, I12, I22; the solver takes I11 for bending along the first direction.
    profile = elements::generalSection(d[0], d[1], d[3], d[2]);
    a = b = 0.0;
  } else {
    failFor(section, fmt::format("is of the kind \"{}\", which is not known", section.profile));
  }
  return elements::shifted(std::move(profile), -section.offset[0] * a, -section.offset[1] * b);
}

}  // namespace

void failFor(const DeckSection& section, const std::string& reason) {
  throw UnknownMass{section.place, fmt::format("the section of {} {}", section.setName, reason)};
}

SectionMasses::SectionMasses(const Deck& deck, const WarningSink& warn)
    : deck_(deck), warn_(warn), known_(deck.sections.size()) {}

double SectionMasses::densityOf(const std::string& material, const DeckSection& section) {
  const auto known = deck_.materials.find(material);
  if (known == deck_.materials.end())
    failFor(section, fmt::format("has the material \"{}\", which is not known", material));
  if (!known->second.density)
    failFor(section, fmt::format("has the material {} without a density", known->second.name));
  const SourcePlace& second = known->second.placeOfSecondDensity;
  if (second.isKnown() && warnedOf_.insert(material).second) {
    warn_(base::warning(second,
                        fmt::format("the density of {} depends on temperature; masses are computed with the first one",
                                    known->second.name)));
  }
  return *known->second.density;
}

std::vector<elements::Layer> SectionMasses::layersOf(const DeckSection& section) {
  std::vector<DeckLayer> all = section.layers;
  if (section.hasNodalThickness) {
    if (all.size() > 1) failFor(section, "has layers whose thickness varies from node to node");
    all = {{1.0, section.material}};
  }
  if (all.empty()) failFor(section, "has no thickness");
  double thickness = 0.0;
  for (const DeckLayer& layer : all) thickness += layer.thickness;
  double height = -thickness * (0.5 + section.offset[0]);
  std::vector<elements::Layer> layers;
  for (const DeckLayer& layer : all) {
    layers.push_back({height, height + layer.thickness, densityOf(layer.material, section)});
    height += layer.thickness;
  }
  return layers;
}

const SectionMass& SectionMasses::of(std::size_t place) {
  const DeckSection& section = deck_.sections[place];
  SectionMass& found = known_[place];
  if (std::exchange(found.isReady, true)) return found;
  if (section.kind == SectionKind::shell) {
    found.layers = layersOf(section);
  } else if (section.kind != SectionKind::pointMass) {
    found.density = densityOf(section.material, section);
  }
  if (section.kind == SectionKind::beam) found.profile = profileOf(section);
  if (section.kind == SectionKind::solid && section.size) found.profile = elements::square(*section.size);
  return found;
}

// The last thickness of a node counts. From the last one on: what is said of a set again is hidden, and would cost
// time.
void SectionMasses::collectThicknesses() {
  std::set<std::string> seen;
  for (auto given = deck_.nodalThicknesses.rbegin(); given != deck_.nodalThicknesses.rend(); ++given) {
    if (const std::optional<int> label = integerFrom(given->member)) {
      nodalThicknesses_.try_emplace(*label, given->thicknesses);
      continue;
    }
    const auto set = deck_.nodeSets.find(canonicalName(given->member));
    if (set == deck_.nodeSets.end() || !seen.insert(set->first).second) continue;
    for (const int label : set->second.labels) nodalThicknesses_.try_emplace(label, given->thicknesses);
  }
}

const std::array<double, 2>& SectionMasses::thicknessAt(int node, const DeckSection& section) {
  if (nodalThicknesses_.empty()) collectThicknesses();
  const auto known = nodalThicknesses_.find(node);
  if (known == nodalThicknesses_.end()) failFor(section, fmt::format("has no thickness at the node {}", node));
  return known->second;
}

}  // namespace importers::calculix
