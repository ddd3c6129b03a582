// The sets of a deck as they go into a database.
#pragma once

#include <string>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/diagnostics.h"

namespace importers::calculix {

// A set under one of the names that the deck gives it.
struct StoredSet {
  const DeckSet* set = nullptr;
  std::string nameInDeck;
  std::string name;  // the final one: no two are equal in records
  bool isRenamed = false;
};

// Each of the sets under each of its names, in their order, with names by uniqueSetNames().
std::vector<StoredSet> storedSets(const std::vector<const DeckSet*>& sets);

// One warning for each set that has another name than the deck gives it, with the deck's line, and one for those that
// records leave out.
void warnOfNames(const std::vector<StoredSet>& sets, const WarningSink& warn);

}  // namespace importers::calculix
