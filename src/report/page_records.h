// The records of an extraction on the page, and where each extreme is.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "inspect/mesh/model_mesh.h"
#include "odbstore/reader.h"
#include "report/page_data.h"
#include "report/surface.h"

namespace report {

struct RecordsPart {
  Json json;
  std::size_t shown = 0;
  std::size_t leftOut = 0;  // for want of room
};

// {lines: array of bytes, "name<TAB>value" each, long values cut short}. Takes as many records of the file as have room
// among `most` bytes. Throws FileError where the file cannot be read or a line has no tab.
RecordsPart recordsPart(const std::string& params, const odbstore::Reader& reader, const inspect::ModelMesh& mesh,
                        const Surface& surface, std::size_t most, PageData& data);

// The lines of a text file of at most a megabyte, for the page; FileError where it cannot be read.
std::vector<std::string> messageLines(const std::string& path);

}  // namespace report
