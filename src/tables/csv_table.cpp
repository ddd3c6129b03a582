#include "tables/csv_table.h"

namespace tables {

namespace {

void appendCell(std::string& line, std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
    line += text;
    return;
  }
  line += '"';
  for (const char c : text) {
    if (c == '"') line += '"';
    line += c;
  }
  line += '"';
}

}  // namespace

void CsvTable::begin(const std::vector<Column>& columns) {
  std::vector<Cell> names;
  names.reserve(columns.size());
  for (const Column& column : columns) names.emplace_back(column.name);
  row(names);
}

void CsvTable::row(const std::vector<Cell>& cells) {
  line_.clear();
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) line_ += ',';
    if (cells[i]) appendCell(line_, *cells[i]);
  }
  line_ += '\n';
  output_.write(line_);
}

}  // namespace tables
