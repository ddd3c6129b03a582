#include "importers/calculix/deck/deck_set_names.h"

#include "importers/calculix/deck/deck_keyword.h"
#include "importers/input/text_fields.h"
#include "importers/run/set_names.h"

namespace importers::calculix {

std::vector<StoredSet> storedSets(const std::vector<const DeckSet*>& sets) {
  std::vector<StoredSet> stored;
  std::vector<NamedSet> named;
  for (const DeckSet* set : sets) {
    for (const std::string& name : set->names) {
      stored.push_back({set, name, {}});
      named.push_back({set->kind, name, set->isOfSurface()});
    }
  }
  std::size_t i = 0;
  for (const FinalSetName& final : uniqueSetNames(named)) {
    stored[i++].name = final.name;
  }
  return stored;
}

PrintedSetNames::PrintedSetNames(const Deck& deck) : deck_(deck) {
  for (const StoredSet& stored : storedSets(deck.setsInOrder())) names_.try_emplace(stored.set, stored.name);
}

std::string PrintedSetNames::nameOf(std::string_view printed, odbstore::SetKind kind) const {
  return nameOf(printed, deck_.setPrintedAs(printed, kind));
}

std::string PrintedSetNames::nameOfSurface(std::string_view printed) const {
  return nameOf(printed, deck_.surfacePrintedAs(printed));
}

std::string PrintedSetNames::nameOf(std::string_view printed, const DeckSet* set) const {
  return set == nullptr ? storableText(withoutQuotes(printed)) : names_.at(set);
}

}  // namespace importers::calculix
