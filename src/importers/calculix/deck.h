// What a CalculiX input deck (.inp) says of sets, elements, their mass and steps.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "importers/calculix/deck_sections.h"
#include "importers/calculix/deck_steps.h"
#include "importers/diagnostics.h"
#include "importers/mass/vector3.h"

namespace importers::calculix {

struct DeckSet {
  std::vector<std::string> names;  // every spelling with which the deck opens it, in that order
  std::string place;               // "<file>:<line>" of its first mention
  std::vector<int> labels;         // ascending, each once

  // Where it is not known yet.
  void addName(const std::string& name);
  // Brings the labels in order.
  void finish();
};

// In the order of the deck. A label may come again: the last one counts.
struct DeckMesh {
  std::vector<std::string> elementTypes;  // in the order of their first use, in capitals
  std::vector<int> elementLabels;
  std::vector<int> typeOfElement;      // place in elementTypes
  std::vector<int> elementNodes;       // labels, element after element
  std::vector<std::size_t> firstNode;  // of each element its first place in elementNodes
  // Only with DeckDetail::mass.
  std::vector<int> nodeLabels;
  std::vector<mass::Vector3> coordinates;

  std::span<const int> nodesOf(std::size_t element) const;
  // Gives back what only sets, surfaces and mass need; elements keep their types.
  void dropNodes();
};

struct Deck {
  std::string heading;  // the first line under *HEADING
  // By canonical name, from *NSET, *ELSET, NSET= on *NODE, ELSET= on *ELEMENT and *SURFACE.
  std::map<std::string, DeckSet> nodeSets;
  std::map<std::string, DeckSet> elementSets;
  DeckMesh mesh;
  std::map<std::string, DeckMaterial> materials;  // by canonical name
  std::vector<DeckSection> sections;              // the later one counts for an element in several
  std::vector<DeckNodalThickness> nodalThicknesses;
  std::vector<std::string> stepTitles;  // of each step its first line of text, or empty
  DeckSteps steps;                      // what each calculates, when it writes, and what it prints
  // The step that first asks for SECTION FORCES, 0 where none does. From there on the solver writes them instead of
  // stresses, even if a later step asks for stresses again.
  int sectionForcesFrom = 0;
};

// How much to keep of a deck: the coordinates of nodes take memory and serve its mass alone.
enum class DeckDetail { sets, mass };

// Reads the deck and the files that it includes, which are looked for beside the file that names them, then beside the
// deck. A number that is none, a set without a name, and a file that is missing or includes itself are an ImportError;
// a set that takes in an unknown one is a warning. All name file and line.
Deck readDeck(const std::string& path, const WarningSink& warn, DeckDetail detail = DeckDetail::sets);

// The name as the solver compares it: in capitals, without blanks and quotes.
std::string canonicalName(std::string_view name);

}  // namespace importers::calculix
