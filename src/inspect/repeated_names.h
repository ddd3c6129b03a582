// Names of records that occur twice.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "inspect/records.h"

namespace inspect {

struct RepeatedName {
  std::string name;
  std::vector<Record> records;  // all that go by it, in the order of the extraction
};

struct RepeatedNames {
  std::uint64_t count = 0;          // of names, each once
  std::vector<RepeatedName> first;  // some of them, in their order
  bool isWhole = true;              // else frames that are alike were looked at once, and `count` is at least
};

// With many records, frames whose fields are those of the frame before are passed over, unless their increments repeat.
RepeatedNames repeatedNames(const RecordList& records, std::size_t most);

}  // namespace inspect
