// A table in an SQLite database.
#pragma once

#include <memory>
#include <string>

#include "tables/table.h"

namespace tables {

// Numbers of records are REAL, in columns of whole ones INTEGER, "None" and cells without a value NULL, all else TEXT.
// All rows are one transaction.
class SqliteTable : public Table {
 public:
  // Writes into the empty file `path`, which nobody else has open; errors call it `name`. Nothing is synchronised to
  // the disk. Throws base::FileError.
  SqliteTable(const std::string& path, std::string name, std::string table);
  ~SqliteTable() override;

  // Throws base::FileError as well where there are more columns than SQLite can have in a table.
  void begin(const std::vector<Column>& columns) override;
  void row(const std::vector<Cell>& cells) override;
  void end() override;

 private:
  struct Connection;

  void bindValue(int place, std::string_view text, const Column& column) const;

  std::string name_;
  std::string table_;
  std::vector<Column> columns_;
  std::unique_ptr<Connection> connection_;
};

}  // namespace tables
