// The results file of a Dakota driver.
#pragma once

#include <cstddef>

#include "tables/table.h"
#include "tables/text_output.h"

namespace tables {

// A line "value name" for each row, of the columns "name" and "value". Blanks in names, which divide words there,
// become
// "_". Dakota takes single numbers: histories and centres are left out.
class DakotaTable : public Table {
 public:
  explicit DakotaTable(TextOutput& output) : output_(output) {}

  // The columns "name" and "value" are to be among the columns.
  void begin(const std::vector<Column>& columns) override;
  void row(const std::vector<Cell>& cells) override;
  void end() override { output_.flush(); }

  std::size_t leftOut() const { return leftOut_; }

  // What a results file holds where there are no results.
  static constexpr std::string_view kFailure = "fail\n";

 private:
  TextOutput& output_;
  std::size_t name_ = 0;
  std::size_t value_ = 0;
  std::size_t leftOut_ = 0;
};

}  // namespace tables
