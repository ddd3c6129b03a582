// What the solver makes of shells, beams and their like in the result file.
//
// It writes them as solids with new nodes, under the labels of the elements; those of layers under new labels too. The
// deck's own nodes are not in the file then, unless solids share them.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/element_kinds.h"
#include "importers/calculix/frd/frd_blocks.h"

namespace importers::calculix {

// For each node of the solid that the solver makes of an element of a kind, in the order of the deck, the place of the
// element's node that it stands for. Empty for solids and elements without a shape.
std::vector<int> nodesOfExpanded(const ElementKind& kind);

class Expansion {
 public:
  // Nothing is expanded.
  Expansion() = default;
  // Finds the elements of a deck, whose nodes are still there, among those of the result file. A solid under the label
  // of a shell, plane element, beam or truss is its expansion. Elements of layers (*SHELL SECTION, COMPOSITE) stand in
  // the order of their labels after the highest label of the deck: layer after layer, the lowest one first.
  Expansion(const Deck& deck, const FrdElements& elements);

  // Labels of the result file that represent a node or an element of the deck, besides its own label; ascending.
  std::vector<int> nodesOf(int node) const;
  // Elements are those of the layers, the lowest one first.
  std::vector<int> elementsOf(int element) const;

  // The members of a set of the deck and everything that represents them: of the nodes of a surface of elements only
  // those on its faces. Ascending, each once.
  std::vector<int> membersOf(const DeckSet& set) const;

 private:
  using Pairs = std::vector<std::pair<int, int>>;  // label in the deck and in the results

  // An element of the result file.
  struct Solid {
    const FrdElementGroup* group = nullptr;
    std::size_t place = 0;  // in the group
  };
  class Finder;

  Pairs nodes_;
  Pairs elements_;
  std::map<const DeckSet*, std::vector<int>> nodesOfFaces_;
};

}  // namespace importers::calculix
