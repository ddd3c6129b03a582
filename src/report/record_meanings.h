// What names of records stand for.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "odbstore/reader.h"

namespace report {

struct RecordMeaning {
  std::int32_t step = -1;   // -1: the database has no such record
  std::int32_t frame = -1;  // -1: a record of the mass or of a history
  std::string field;
  std::string quantity;
  std::string set;  // as it stands in the name; empty for the whole model
  std::string extreme;
};

// Of each name, in the order of a file of records: of a name that occurs several times the first one means the first of
// the records so called, and so on. Throws StoreError.
std::vector<RecordMeaning> recordMeanings(const std::shared_ptr<const odbstore::Reader>& reader,
                                          const std::vector<std::string>& names);

}  // namespace report
