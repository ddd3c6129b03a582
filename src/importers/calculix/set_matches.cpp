#include "importers/calculix/set_matches.h"

#include <fmt/core.h>

#include <algorithm>
#include <unordered_set>

namespace importers::calculix {

namespace {

// Sets that have one thing in common, in the order of the deck.
struct Group {
  SourcePlace place;
  std::vector<std::string> names;

  void add(const DeckSet& set) {
    if (names.empty()) place = set.place;
    names.push_back(set.names.front());
  }

  void warnInto(std::vector<base::Diagnostic>& warnings, const std::string& before,
                const std::string& after = "") const {
    if (!names.empty()) warnings.push_back(base::warning(place, fmt::format("{} {}{}", before, listed(names), after)));
  }
};

bool isIn(const std::vector<int>& members, const base::LabelIndex& labels) {
  return std::any_of(members.begin(), members.end(), [&](int label) { return labels.contains(label); });
}

}  // namespace

std::vector<base::Diagnostic> warningsOfUnmatchedSets(const Deck& deck, const Expansion& expansion,
                                                      const base::LabelIndex& nodes, const base::LabelIndex& elements) {
  Group empty;
  Group loose;
  Group nodesNotWritten;
  Group elementsNotWritten;
  std::unordered_set<int> used;
  for (const DeckSet* set : deck.setsInOrder()) {
    const bool isOfNodes = set->kind == odbstore::SetKind::node;
    if (set->labels.empty()) {
      empty.add(*set);
    } else if (isIn(expansion.membersOf(*set), isOfNodes ? nodes : elements)) {
      continue;
    } else if (!isOfNodes) {
      elementsNotWritten.add(*set);
    } else {
      if (used.empty()) used.insert(deck.mesh.elementNodes.begin(), deck.mesh.elementNodes.end());
      const bool isUsed = std::any_of(set->labels.begin(), set->labels.end(), [&](int n) { return used.contains(n); });
      (isUsed ? nodesNotWritten : loose).add(*set);
    }
  }
  std::vector<base::Diagnostic> warnings;
  empty.warnInto(warnings, "empty sets:");
  loose.warnInto(warnings, "no node of the results is in", ": their nodes belong to no element");
  nodesNotWritten.warnInto(warnings, "no node of the results is in");
  elementsNotWritten.warnInto(warnings, "no element of the results is in");
  return warnings;
}

}  // namespace importers::calculix
