// Writes one file of VTK's XML format for unstructured grids (.vtu), its numbers appended in raw form.
//
// The form is that of "VTK File Formats" (The VTK User's Guide, chapter 19), version 1.0 with headers of 64 bits:
// offsets count from the byte after the "_"; an array is its length in bytes and the bytes, packed it is the number of
// blocks, the length of a block, that of the last one where it is shorter, the packed length of each, and the blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/descriptor.h"
#include "base/output_file.h"

namespace vtk_export {

enum class Number { float32, float64, int32, int64, uint8 };

struct DataArray {
  std::string name;
  Number number = Number::float32;
  std::size_t width = 1;
  std::vector<std::string> components = {};  // names of the columns, or none
};

// What stands in a file before its numbers.
struct VtuHead {
  std::size_t points = 0;
  std::size_t cells = 0;
  bool isPacked = false;                                   // by zlib
  std::vector<std::pair<std::string, std::string>> texts;  // of the whole file, name and value
  std::vector<std::pair<std::string, double>> numbers;     // likewise
  std::vector<DataArray> pointData;
  std::vector<DataArray> cellData;
};

// The arrays come in this order: point data, cell data, coordinates (float64, [points, 3]), connectivity (int64),
// offsets (int64), types (uint8).
class VtuFile {
 public:
  // The file has its name when publish() is called. Throws base::FileError, as all that follows.
  VtuFile(const std::string& path, const VtuHead& head);

  // The next array.
  void append(std::span<const std::byte> bytes);
  template <class Value>
  void append(const std::vector<Value>& values) {
    append(std::as_bytes(std::span(values)));
  }
  void publish();

 private:
  void writeHead(const VtuHead& head);
  void addArray(const DataArray& array, std::string& text);
  void write(std::span<const std::byte> bytes);
  void writeText(const std::string& text) { write(std::as_bytes(std::span(text))); }
  void writeCount(std::uint64_t count) { write(std::as_bytes(std::span(&count, 1))); }
  void writePacked(std::span<const std::byte> bytes);

  base::OutputFile output_;
  base::Descriptor file_;
  bool isPacked_;
  std::int64_t end_ = 0;                 // bytes that are written
  std::int64_t data_ = 0;                // the byte from which offsets count
  std::vector<std::int64_t> offsetsAt_;  // where the offset of each array stands
  std::size_t next_ = 0;
};

}  // namespace vtk_export
