// A set of a CalculiX deck.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "importers/input/diagnostics.h"
#include "odbstore/schema.h"

namespace importers::calculix {

// What makes a set: lists of members, or a surface of nodes or of faces of elements.
enum class DeckSetOrigin { lists, surfaceOfNodes, surfaceOfFaces };

// A face of an element in a surface. The number is that of the solid that the solver makes of shells, plane elements,
// beams and their like: 1 is the lower side of a shell, 2 its upper side.
struct DeckFace {
  int element = 0;
  int face = 0;
};

struct DeckSet {
  odbstore::SetKind kind = odbstore::SetKind::node;
  DeckSetOrigin origin = DeckSetOrigin::lists;
  std::vector<std::string> names;  // every spelling with which the deck opens it, in that order, without quotes
  SourcePlace place;               // of its first mention
  int order = 0;                   // of its first mention among all sets of the deck
  std::vector<int> labels;         // ascending, each once
  // Of the nodes of faces: those faces that belong to elements that the solver may write as solids.
  std::vector<DeckFace> faces;

  bool isOfSurface() const { return origin != DeckSetOrigin::lists; }

  // Of sets that are not known yet.
  void addName(const std::string& name);
  // Sorts the labels.
  void finish();
};

// The name as the solver compares it: in capitals, without blanks, up to the first comma. Quotes count: NSET="A" and
// NSET=A are two sets.
std::string canonicalName(std::string_view name);

}  // namespace importers::calculix
