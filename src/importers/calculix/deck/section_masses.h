// The mass data that the sections of a deck give their elements.
#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "elements/cross_section.h"
#include "elements/element_integration.h"
#include "importers/calculix/deck/deck.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// Why the mass of a deck is unknown, and the place in the deck, if known.
struct UnknownMass {
  SourcePlace place;
  std::string reason;
};

struct SectionMass {
  bool isReady = false;
  double density = 0.0;                 // of all but layers and point masses
  std::vector<elements::Layer> layers;  // of shells
  elements::CrossSection profile;       // of beams and trusses; empty for a solid section without an area
};

class SectionMasses {
 public:
  // Both must live as long.
  SectionMasses(const Deck& deck, const WarningSink& warn);

  // Of the section at a place in the deck, found once. Throws UnknownMass for a section without a density or thickness
  // and for an unknown profile. A density that depends on temperature is a warning, once.
  const SectionMass& of(std::size_t section);

  // Two thicknesses of a node from *NODAL THICKNESS. Throws UnknownMass if the deck gives none.
  const std::array<double, 2>& thicknessAt(int node, const DeckSection& section);

 private:
  double densityOf(const std::string& material, const DeckSection& section);
  std::vector<elements::Layer> layersOf(const DeckSection& section);
  void collectThicknesses();

  const Deck& deck_;
  const WarningSink& warn_;
  std::vector<SectionMass> known_;
  std::set<std::string> warnedOf_;                         // materials
  std::map<int, std::array<double, 2>> nodalThicknesses_;  // once they are asked for
};

// Throws UnknownMass for that section.
[[noreturn]] void failFor(const DeckSection& section, const std::string& reason);

}  // namespace importers::calculix
