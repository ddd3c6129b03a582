#include "tables/json_table.h"

#include "tables/json_value.h"

namespace tables {

void JsonTable::begin(const std::vector<Column>& columns) {
  for (const Column& column : columns) keys_.push_back({jsonOfText(column.name) + ":", column.isValue});
  output_.write("[");
}

void JsonTable::row(const std::vector<Cell>& cells) {
  line_ = isFirst_ ? "\n{" : ",\n{";
  isFirst_ = false;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (!cells[i]) continue;
    if (line_.back() != '{') line_ += ',';
    line_ += keys_[i].text;
    line_ += keys_[i].isValue ? jsonOfValue(*cells[i]) : jsonOfText(*cells[i]);
  }
  line_ += '}';
  output_.write(line_);
}

void JsonTable::end() {
  output_.write("\n]\n");
  output_.flush();
}

}  // namespace tables
