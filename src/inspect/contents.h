// What a database says of what it holds: nothing but its catalog is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "odbstore/reader.h"

namespace inspect {

// Texts live as long as the database's file. Places of steps are from 0, in the order of the database.

struct StepContents {
  std::string name;
  odbstore::StepInfo info;
  std::vector<odbstore::FrameInfo> frames;
};

// The rows of one block, in each of its frames.
struct BlockContents {
  odbstore::LocationInfo location;
  int type = 0;
  std::int64_t rows = 0;
  std::int64_t storedRows = 0;  // fewer where many places share a row
  std::int64_t width = 0;       // numbers in a row
  bool isDouble = false;
  std::int64_t frames = 0;  // that it is in
};

struct FieldContents {
  std::string name;
  std::size_t step = 0;
  odbstore::FieldInfo info;     // what it says of itself, unless it says something else in a frame
  bool changes = false;         // whether it does
  std::vector<int> frames;      // places in the step, ascending
  std::int64_t fewestRows = 0;  // of all frames that have it, their rows in all blocks
  std::int64_t mostRows = 0;
  std::vector<BlockContents> blocks;
};

struct HistoryContents {
  std::size_t step = 0;
  std::string_view region;
  std::string_view description;
  std::string_view output;
  std::string_view set;  // empty for none
  int node = -1;         // -1 for none
  int element = -1;
  int integrationPoint = 0;  // 0 for none
  int sectionPoint = 0;
  std::int64_t samples = 0;
  std::int64_t width = 0;  // numbers in a sample: its abscissae, then the value
};

struct MeshContents {
  struct Elements {
    std::string_view type;
    std::int64_t count = 0;
  };

  std::string_view instance;
  std::string_view part;
  std::int64_t nodes = 0;  // 0 where the database has no mesh
  std::vector<Elements> elements;
};

std::vector<StepContents> stepContents(const odbstore::Reader& database);
// By step, then by name.
std::vector<FieldContents> fieldContents(const odbstore::Reader& database);
// By step, then by region, then by output.
std::vector<HistoryContents> historyContents(const odbstore::Reader& database);
std::vector<MeshContents> meshContents(const odbstore::Reader& database);

// "scalar", "vector", "tensor", or "type 4" for what is none of them.
std::string kindWord(int type);
// "maxPrincipal", "mises", ...; the number of a code that is not known.
std::string invariantWord(int code);

// The keywords that take a field of this description: EXTRACT_ALL is always the last.
std::vector<std::string_view> takingKeywords(std::string_view description);

}  // namespace inspect
