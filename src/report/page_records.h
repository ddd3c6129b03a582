// The records of an extraction on the page.
#pragma once

#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "inspect/mesh/model_mesh.h"
#include "odbstore/reader.h"
#include "report/page_data.h"
#include "report/page_fields.h"
#include "report/record_meanings.h"
#include "report/surface.h"

namespace report {

struct RecordsSource {
  std::string params;
  std::string configuration;  // of the extraction; empty for none
};

// The records of a file as they get on the page: {lines: array of bytes, "name<TAB>value" each, long values cut short;
// texts; columns: {step, frame, field, quantity, set, extreme, vertex, element, node, cell, point, instance: array}}.
// Of each record `step` and `frame` are places, those up to `extreme` places in `texts`; `vertex` and `element` are
// numbers of the page, `node` and `cell` labels, `instance` is a place and there where there are several; -1 for none.
class PageRecords {
 public:
  // Takes as many records of the file as have room among `most` bytes. Throws FileError where the file cannot be read
  // or a line has no tab.
  PageRecords(const RecordsSource& source, std::shared_ptr<const odbstore::Reader> reader, std::size_t most);

  std::size_t shown() const { return names_.size(); }
  std::size_t leftOut() const { return leftOut_; }  // for want of room
  std::size_t unknown() const;                      // names that the database does not give

  // Bytes that they take on the page, about.
  std::size_t bytes() const;
  // Records of fields that are not shown get no place. Throws FileError.
  Json json(const inspect::ModelMesh& mesh, const Surface& surface, const std::set<ShownField>& shown, PageData& data);

 private:
  void read();

  RecordsSource source_;
  std::size_t most_;
  std::string lines_;
  std::vector<std::string> names_;
  std::size_t leftOut_ = 0;
  std::optional<PackedArray> packed_;
  std::optional<RecordMeanings> meanings_;
};

// The lines of a text file, a thousand at most, without empty ones; FileError where it cannot be read.
std::vector<std::string> messageLines(const std::string& path);

}  // namespace report
