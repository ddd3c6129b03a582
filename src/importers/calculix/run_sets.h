// The sets of a deck as a run's results have them.
#pragma once

#include <string>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/frd/frd_blocks.h"
#include "importers/run/outline.h"
#include "importers/run/sink.h"

namespace importers::calculix {

class RunSets {
 public:
  // `nodes` are the labels of those of the result file, `mesh` its elements; the deck must still have the nodes of its
  // own. Problems with the sets go to `warn`.
  RunSets(const Deck& deck, const std::vector<int>& nodes, const FrdElements& mesh, const WarningSink& warn);

  // Appends them in the order of the deck, under every name that it gives them: with their members and all nodes and
  // elements that the solver has made of those, and after them sets of the copies of a cyclic sector.
  void addTo(Outline& outline) const;
  // In the same order.
  void deliver(Sink& sink) const;

 private:
  struct Named {
    OutlineSet set;
    std::size_t members = 0;  // place in members_
  };

  void add(const DeckSet& set, std::vector<int> members);

  std::vector<Named> sets_;
  std::vector<std::vector<int>> members_;
};

}  // namespace importers::calculix
