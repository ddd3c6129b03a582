// A table that is written row by row.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tables {

struct Column {
  std::string name;
  bool isValue = false;  // of records: numbers, tuples of them, or words; otherwise text
  bool isWhole = false;  // values that are whole numbers
};

// Nothing where a row has no value in a column.
using Cell = std::optional<std::string_view>;

// Every function throws base::FileError where what it writes to takes no more.
class Table {
 public:
  Table() = default;
  virtual ~Table() = default;
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  // Once, first.
  virtual void begin(const std::vector<Column>& columns) = 0;
  // As many cells as there are columns. They are not needed any more when this returns.
  virtual void row(const std::vector<Cell>& cells) = 0;
  // Once, last: nothing of the table is left unwritten.
  virtual void end() = 0;
};

}  // namespace tables
