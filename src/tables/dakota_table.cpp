#include "tables/dakota_table.h"

#include <algorithm>
#include <string>

namespace tables {

void DakotaTable::begin(const std::vector<Column>& columns) {
  const auto placeOf = [&](std::string_view name) {
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const Column& c) { return c.name == name; });
    return static_cast<std::size_t>(found - columns.begin());
  };
  name_ = placeOf("name");
  value_ = placeOf("value");
}

void DakotaTable::row(const std::vector<Cell>& cells) {
  const std::string_view value = cells[value_].value_or("");
  if (value.empty() || value.front() == '(' || value == "None") {
    ++leftOut_;
    return;
  }
  std::string name(cells[name_].value_or(""));
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == ' ' || c == '\t'; }, '_');
  output_.write(std::string(value) + " " + name + "\n");
}

}  // namespace tables
