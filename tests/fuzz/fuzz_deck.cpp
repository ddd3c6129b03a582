// Decks, and the mass of their model.
#include "fuzz_input.h"
#include "importers/calculix/deck.h"
#include "importers/calculix/mass_properties.h"
#include "importers/diagnostics.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace importers::calculix;
  const InputFile file(data, size);
  const importers::WarningSink ignore = [](const std::string&) {};
  try {
    const Deck deck = readDeck(file.path(), ignore, {DeckDetail::mass});
    require(deck.steps.steps.size() == deck.stepTitles.size());
    massOf(deck, ignore);
  } catch (const importers::ImportError&) {
    return 0;
  }
  return 0;
}
