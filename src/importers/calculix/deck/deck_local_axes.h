// Where a run writes results in local axes.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "importers/calculix/deck/deck_keyword.h"

namespace importers::calculix {

struct Deck;

struct DeckLocalAxes {
  // Of each step the solver's keys ("U", "RF", "S") of those fields of the result file that GLOBAL=NO of *NODE FILE or
  // *EL FILE puts into local axes. Requests hold in later steps until one of their kind replaces them.
  std::vector<std::set<std::string>> fields;
  // Nodes with *TRANSFORM, whose vectors are in those axes then, and elements with an orientation in their section,
  // whose tensors are. Everything else stays in the axes of the model. Labels, ascending.
  std::vector<int> nodes;
  std::vector<int> elements;
  // The element sets of those sections, as the deck spells them.
  std::vector<std::string> orientedSets;

  // Whether a field is in local axes in a step (from 1).
  bool has(int step, const std::string& key) const;
};

// Collects them while a deck is read.
class DeckLocalAxesReader {
 public:
  // Takes any keyword; the data lines of *NODE FILE and *EL FILE (or OUTPUT) under it are its own if it returns true.
  bool start(const Keyword& keyword);
  // A data line of such a request: keys of fields.
  void takeData(std::string_view line);

  // The deck has its sets, mesh and sections by then.
  DeckLocalAxes finish(const Deck& deck);

 private:
  using LocalByKey = std::map<std::string, bool>;

  // Requests for nodes replace only those for nodes, likewise for elements.
  struct Requests {
    LocalByKey keys;
    bool isNewInStep = true;
  };

  void settle();

  std::vector<std::set<std::string>> fields_;
  Requests ofNodes_;
  Requests ofElements_;
  Requests* open_ = nullptr;
  bool isLocal_ = false;
  std::set<std::string> transformedSets_;  // canonical names
};

}  // namespace importers::calculix
