// Printed tables, and the steps and frames that they are given.
#include "fuzz_input.h"
#include "importers/calculix/dat/placed_tables.h"
#include "importers/calculix/dat/printed_mapping.h"
#include "importers/input/diagnostics.h"

namespace {

using namespace importers::calculix;

void readRows(const std::string& path) {
  DatReader reader(path);
  DatRow row;
  DatValues values;
  while (const std::optional<DatTable> table = reader.next()) {
    const DatFormat& format = datFormatOf(*table);
    while (reader.nextRow(row)) {
      if (!readDatRow(format, row, values)) continue;
      const auto columns = datColumns(format, table->heading, values.numbers.size());
      require(!columns || columns->size() == values.numbers.size());
    }
  }
}

Deck deckOf(std::initializer_list<Procedure> procedures) {
  Deck deck;
  for (const Procedure procedure : procedures) {
    DeckStep step;
    step.procedure = procedure;
    step.period = 1.0;
    step.prints = {{PrintRequest::Kind::node, "TOP", "U", PrintRequest::Totals::no}};
    deck.steps.steps.push_back(step);
  }
  return deck;
}

void placeAll(const std::string& path, const Deck& deck) {
  const importers::WarningSink ignore = [](const base::Diagnostic&) {};
  Frames frames;
  const PrintedTables printed = placePrintedTables(path, deck, true, frames, ignore);
  for (const PrintedTable& table : printed.tables) {
    require(table.step >= 0 && (!table.frame || *table.frame < frames.size()));
    for (const MappedField& field : mapTable(table, StressAt::nodes)) require(!field.name.empty());
    for (const DatValues& row : table.kept) {
      for (std::size_t column = 0; column < row.numbers.size(); ++column) {
        require(table.isLeftOut || !outputName(table, column, row).empty());
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const InputFile file(data, size);
  try {
    readRows(file.path());
    placeAll(file.path(), {});
    placeAll(file.path(), deckOf({Procedure::time, Procedure::modes, Procedure::buckling, Procedure::steadyState}));
  } catch (const importers::ImportError&) {
    return 0;
  }
  return 0;
}
