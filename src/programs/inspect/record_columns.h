// The parts of records as columns of tables.
#pragma once

#include <string>
#include <vector>

#include "inspect/records.h"
#include "tables/table.h"

namespace inspect {

// kind, step, frame, frameValue, setKind, ownerKind, owner, set, field, quantity, extreme, region, output, label.
std::vector<tables::Column> partColumns();

// The cells of those columns; empty ones where a record has no such part.
class PartCells {
 public:
  // Of `records`, of which only what all of them have in common counts; good until the next call. Without records all
  // cells are empty.
  const std::vector<tables::Cell>& of(const std::vector<Record>& records);

 private:
  std::vector<std::string> texts_;
  std::vector<tables::Cell> cells_;
};

}  // namespace inspect
