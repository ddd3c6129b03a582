// What the program that reads the HDF5 structure finds when it looks at the whole file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace odbstore {

// Bytes of the file that hold consecutive slabs of one data set.
struct DataExtent {
  std::int64_t begin = 0;
  std::int64_t end = 0;
  std::string path;            // of the data set, as HDF5 has it
  std::int64_t firstSlab = 0;  // along the first dimension
  std::int64_t slabBytes = 0;  // of each
};

struct Problem {
  std::string object;  // its path in the file
  std::string reason;
};

struct Inspection {
  int layout = 0;
  std::vector<std::byte> catalog;   // of what could be read; empty for layout 1
  std::vector<DataExtent> extents;  // of every data set, known or not, by their first byte
  std::vector<Problem> problems;    // objects that cannot be opened, are not allowed in the layout or do not fit it
};

std::string packed(const Inspection& inspection);
// Throws std::runtime_error for bytes that packed() cannot have made.
Inspection unpackedInspection(std::string_view bytes);

}  // namespace odbstore
