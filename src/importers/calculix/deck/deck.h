// What a CalculiX input deck (.inp) says of sets, elements, their mass and steps.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "elements/vector3.h"
#include "importers/calculix/deck/deck_local_axes.h"
#include "importers/calculix/deck/deck_sections.h"
#include "importers/calculix/deck/deck_set.h"
#include "importers/calculix/deck/deck_steps.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// In the order of the deck. A label may come again: the last one counts.
struct DeckMesh {
  std::vector<std::string> elementTypes;  // in the order of their first use, in capitals
  std::vector<int> elementLabels;
  std::vector<int> typeOfElement;      // place in elementTypes
  std::vector<int> elementNodes;       // labels, element after element
  std::vector<std::size_t> firstNode;  // of each element its first place in elementNodes
  std::vector<int> nodeLabels;
  std::vector<elements::Vector3> coordinates;  // only with DeckDetail::mass
  // "<file>:<line>" of the reason why the deck is incomplete: a missing included file, or the run that it restarts.
  SourcePlace placeOfMissing;

  bool isWhole() const { return !placeOfMissing.isKnown(); }
  std::span<const int> nodesOf(std::size_t element) const;
  // Frees what only the mass needs.
  void dropCoordinates();
  // Also frees the nodes of elements, which the Expansion needs; elements keep their types.
  void dropNodes();
};

// *CYCLIC SYMMETRY MODEL with NGRAPH: the result file holds copies of the sector beside it.
struct DeckSectorCopies {
  SourcePlace place;
  int sectors = 1;  // of the whole circle that the file holds, the deck's own one among them
};

struct Deck {
  std::string heading;  // the first line under *HEADING
  // By canonical name, from *NSET, *ELSET, NSET= on *NODE, ELSET= on *ELEMENT and *SURFACE.
  std::map<std::string, DeckSet> nodeSets;
  std::map<std::string, DeckSet> elementSets;
  // The canonical name of a surface's sets, by the canonical name of the surface.
  std::map<std::string, std::string> setsOfSurfaces;
  // All of the sets in the order of their first mention; of a surface the elements before the nodes. Pointers into the
  // maps.
  std::vector<const DeckSet*> setsInOrder() const;
  // The set or the surface that the solver prints (.dat) under a name, which is in capitals, without blanks and cut at
  // a comma; null if there is none. A set of that kind comes before one of the other.
  const DeckSet* setPrintedAs(std::string_view name, odbstore::SetKind kind) const;
  const DeckSet* surfacePrintedAs(std::string_view name) const;
  DeckMesh mesh;
  std::map<std::string, DeckMaterial> materials;  // by canonical name
  std::vector<DeckSection> sections;              // the later one counts for an element in several
  std::vector<DeckNodalThickness> nodalThicknesses;
  std::vector<std::string> stepTitles;  // of each step its first line of text, or empty
  DeckSteps steps;                      // what each calculates, when it writes, and what it prints
  // The step that first asks for SECTION FORCES, 0 if none does. From there on the solver writes them instead of
  // stresses, even if a later step asks for stresses again.
  int sectionForcesFrom = 0;
  DeckLocalAxes localAxes;
  std::optional<DeckSectorCopies> sectorCopies;
};

// How much to read of a deck: the coordinates of nodes and the numbers of sections serve its mass alone.
enum class DeckDetail { sets, mass };

struct DeckOptions {
  DeckDetail detail = DeckDetail::sets;
  bool isStrict = false;  // whether an included file that is missing is an error, else a warning
};

// Reads the deck and the files that it includes, which are searched for as DeckIncludes says. A malformed number, a set
// without a name, a file that includes itself and more than LabelBudget and DeckIncludes allow are an ImportError; a
// set that takes in an unknown one or labels that the mesh does not have is a warning. All name file and line.
Deck readDeck(const std::string& path, const WarningSink& warn, const DeckOptions& options = {});

}  // namespace importers::calculix
