#include "importers/calculix/printed_tables.h"

#include <filesystem>

namespace importers::calculix {

namespace {

bool keepsRows(const DatFormat& format) { return format.rows == DatRows::mode || format.rows == DatRows::total; }

void readRows(DatReader& reader, PrintedTable& table) {
  DatRow row;
  DatValues values;
  while (table.rows == 0 || keepsRows(*table.format) ? reader.nextRow(row) : reader.skipRow()) {
    const bool isFirst = table.rows++ == 0;
    if (!isFirst && !keepsRows(*table.format)) continue;
    if (!readDatRow(*table.format, row, values)) continue;
    if (isFirst) table.width = values.numbers.size();
    if (keepsRows(*table.format)) table.kept.push_back(values);
  }
}

}  // namespace

PrintedTables readPrintedTables(const std::string& path) {
  PrintedTables printed;
  std::error_code ignored;
  if (path.empty() || !std::filesystem::exists(path, ignored)) return printed;
  DatReader reader(path);
  std::size_t ordinal = 0;
  DatTable section;
  while (const std::optional<DatTable> head = reader.next()) {
    PrintedTable table;
    table.ordinal = ordinal++;
    table.head = *head;
    table.format = &datFormatOf(*head);
    if (table.format->rows == DatRows::section) section = *head;
    if (table.format->rows == DatRows::total && !head->time) {
      table.isOfSection = true;
      table.head.set = section.set;
      table.head.time = section.time;
    }
    if (table.format->rows == DatRows::ignored) continue;
    readRows(reader, table);
    printed.tables.push_back(std::move(table));
  }
  printed.lastLine = reader.lineNumber();
  printed.isCutOff = reader.isCutOff();
  if (printed.isCutOff && !printed.tables.empty()) printed.tables.pop_back();
  return printed;
}

}  // namespace importers::calculix
