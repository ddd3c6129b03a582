// Nodes and elements of a deck while it is read.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/deck_keyword.h"
#include "importers/input/line_reader.h"

namespace importers::calculix {

// Fills the mesh of a deck. Malformed numbers are an ImportError.
class DeckMeshReader {
 public:
  // Whether coordinates of nodes are kept, beside their labels.
  DeckMeshReader(DeckMesh& mesh, bool withCoordinates) : mesh_(mesh), withCoordinates_(withCoordinates) {}

  // *ELEMENT; an ImportError without a type.
  void startElements(const Keyword& keyword, const LineReader& lines);
  // *USER ELEMENT: how many nodes a type of the user's has.
  void defineUserElement(const Keyword& keyword, const LineReader& lines);

  // The label of the node on a data line of *NODE.
  int takeNode(std::string_view line, const LineReader& lines);
  // The label of the element that a data line of *ELEMENT begins; nothing for a continuation line.
  std::optional<int> takeElement(std::string_view line, const LineReader& lines);

 private:
  DeckMesh& mesh_;
  bool withCoordinates_;
  std::map<std::string, int> nodesOfUserType_;
  int type_ = 0;
  int nodesPerElement_ = 0;
  int missingNodes_ = 0;
};

}  // namespace importers::calculix
