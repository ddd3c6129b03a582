// The sets of a deck as they go into a database.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// A set under one of the names that the deck gives it.
struct StoredSet {
  const DeckSet* set = nullptr;
  std::string nameInDeck;
  std::string name;  // the final one: no two are equal in records
};

// Each of the sets under each of its names, in their order, with names by uniqueSetNames().
std::vector<StoredSet> storedSets(const std::vector<const DeckSet*>& sets);

// The names in the database of sets and surfaces that the solver prints (.dat).
class PrintedSetNames {
 public:
  // The deck must live as long.
  explicit PrintedSetNames(const Deck& deck);

  // The first of a set's final names. `printed` is in capitals, without blanks and cut off at a comma; where the deck
  // has no such set of that kind, one of the other kind counts, and where it has none at all the printed name without
  // quotes.
  std::string nameOf(std::string_view printed, odbstore::SetKind kind) const;
  // The same for a surface: the name of its set of elements, or of nodes if it is one of nodes.
  std::string nameOfSurface(std::string_view printed) const;

 private:
  std::string nameOf(std::string_view printed, const DeckSet* set) const;

  const Deck& deck_;
  std::map<const DeckSet*, std::string> names_;
};

}  // namespace importers::calculix
