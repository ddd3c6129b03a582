#include "importers/calculix/deck_set_names.h"

#include <fmt/format.h>

#include "importers/calculix/deck_keyword.h"
#include "importers/run/set_names.h"
#include "importers/text_fields.h"

namespace importers::calculix {

std::vector<StoredSet> storedSets(const std::vector<const DeckSet*>& sets) {
  std::vector<StoredSet> stored;
  std::vector<NamedSet> named;
  for (const DeckSet* set : sets) {
    for (const std::string& name : set->names) {
      stored.push_back({set, name, {}, false});
      named.push_back({set->kind, name, set->isOfSurface()});
    }
  }
  std::size_t i = 0;
  for (const FinalSetName& final : uniqueSetNames(named)) {
    stored[i].name = final.name;
    stored[i++].isRenamed = final.isRenamed;
  }
  return stored;
}

void warnOfNames(const std::vector<StoredSet>& sets, const WarningSink& warn) {
  std::vector<std::string> hidden;
  std::string place;
  for (const StoredSet& stored : sets) {
    const bool isOfNodes = stored.set->kind == odbstore::SetKind::node;
    if (stored.isRenamed) {
      warn(fmt::format("{}: note: the {} set {} becomes {}, because records cannot tell it from another set",
                       stored.set->place, isOfNodes ? "node" : "element", stored.nameInDeck, stored.name));
    }
    if (!isLeftOutOfRecords(stored.name)) continue;
    if (hidden.empty()) place = stored.set->place;
    hidden.push_back(stored.name);
  }
  if (hidden.empty()) return;
  warn(
      fmt::format("{}: warning: there will be no records of the sets {}: an extraction leaves out sets whose names "
                  "contain \"Warn\" or \"Info\"",
                  place, listed(hidden)));
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
