// Printed tables, and the steps and frames that they are given.
#include "fuzz_input.h"
#include "importers/calculix/printed_mapping.h"
#include "importers/calculix/printed_places.h"
#include "importers/diagnostics.h"

namespace {

using namespace importers::calculix;

void readRows(const std::string& path) {
  DatReader reader(path);
  DatRow row;
  DatValues values;
  while (const std::optional<DatTable> table = reader.next()) {
    const DatFormat& format = datFormatOf(*table);
    while (reader.nextRow(row)) {
      if (readDatRow(format, row, values)) require(values.numbers.size() >= format.width());
    }
  }
}

void placeAll(const std::string& path, const std::vector<Procedure>& procedures) {
  PrintedTables printed = readPrintedTables(path);
  const auto ignore = [](const std::string&) {};
  const importers::WarningSink warn = ignore;
  Frames frames("", warn);
  placeTables(printed.tables, procedures, frames);
  for (const PrintedTable& table : printed.tables) {
    require(table.step >= 0 && (!table.frame || *table.frame < frames.size()));
    for (const MappedField& field : mapTable(table, StressAt::nodes)) require(!field.name.empty());
    for (const DatValues& row : table.kept) {
      for (std::size_t column = 0; column < row.numbers.size(); ++column) {
        require(!outputName(table, column, row).empty() || table.format->name == "EIG");
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
    placeAll(file.path(), {Procedure::time, Procedure::modes, Procedure::buckling, Procedure::steadyState});
  } catch (const importers::ImportError&) {
    return 0;
  }
  return 0;
}
