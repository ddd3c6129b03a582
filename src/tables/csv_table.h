// Comma-separated values as RFC 4180 has them, with a line feed at the end of a line.
#pragma once

#include "tables/table.h"
#include "tables/text_output.h"

namespace tables {

// A cell is in quotes where it has a comma, a quote or a line's end; numbers are as params.txt has them; one without a
// value is empty.
class CsvTable : public Table {
 public:
  explicit CsvTable(TextOutput& output) : output_(output) {}

  void begin(const std::vector<Column>& columns) override;
  void row(const std::vector<Cell>& cells) override;
  void end() override { output_.flush(); }

 private:
  TextOutput& output_;
  std::string line_;
};

}  // namespace tables
