// Decks, the names of their sets, and the mass of their model.
#include <set>
#include <string>

#include "fuzz_input.h"
#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/deck_set_names.h"
#include "importers/calculix/deck/mass_properties.h"
#include "importers/input/diagnostics.h"
#include "importers/run/set_names.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace importers::calculix;
  const InputFile file(data, size);
  const importers::WarningSink ignore = [](const base::Diagnostic&) {};
  try {
    const Deck deck = readDeck(file.path(), ignore, {DeckDetail::mass});
    require(deck.steps.steps.size() == deck.stepTitles.size());
    std::set<std::string> names;
    for (const StoredSet& set : storedSets(deck.setsInOrder())) {
      require(names.insert(importers::nameInRecords(set.name)).second);
    }
    massOf(deck, ignore);
  } catch (const importers::ImportError&) {
    return 0;
  }
  return 0;
}
