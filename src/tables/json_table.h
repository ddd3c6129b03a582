// A JSON array of objects, one a line.
#pragma once

#include "tables/table.h"
#include "tables/text_output.h"

namespace tables {

// The keys are the names of the columns; cells without a value are left out.
class JsonTable : public Table {
 public:
  explicit JsonTable(TextOutput& output) : output_(output) {}

  void begin(const std::vector<Column>& columns) override;
  void row(const std::vector<Cell>& cells) override;
  void end() override;

 private:
  struct Key {
    std::string text;  // in quotes, with the colon behind it
    bool isValue;
  };

  TextOutput& output_;
  std::vector<Key> keys_;
  std::string line_;
  bool isFirst_ = true;
};

}  // namespace tables
