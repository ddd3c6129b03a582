// The records of an extraction on the page.
#pragma once

#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "odbstore/reader.h"
#include "report/page_data.h"

namespace report {

struct RecordsPart {
  Json json;
  std::size_t shown = 0;
  std::size_t leftOut = 0;  // for want of room
  std::size_t unknown = 0;  // names that the database does not give
};

// {lines: array of bytes, "name<TAB>value" each, long values cut short; texts; columns: {step, frame, field, quantity,
// set, extreme: array}}. Of each record `step` and `frame` are places, -1 for none, and the others places in `texts`.
// Takes as many records of the file as have room among `most`
// bytes. Throws FileError where the file cannot be read or a line has no tab.
RecordsPart recordsPart(const std::string& params, const std::shared_ptr<const odbstore::Reader>& reader,
                        std::size_t most, PageData& data);

// The lines of a text file, a thousand at most, without empty ones; FileError where it cannot be read.
std::vector<std::string> messageLines(const std::string& path);

}  // namespace report
