// What names of records stand for, and where the extremes are.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inspect/mesh/model_mesh.h"
#include "odbstore/reader.h"
#include "report/field_rows.h"

namespace report {

struct RecordMeaning {
  std::int32_t step = -1;   // -1: the database has no such record
  std::int32_t frame = -1;  // -1: a record of the mass or of a history
  std::string field;
  std::string quantity;
  std::string set;  // as it stands in the name; empty for the whole model
  std::string extreme;
  std::optional<Place> place;  // of an extreme of a field
};

// One thread at a time.
class RecordMeanings {
 public:
  // Of each name, in the order of a file of records: of a name that occurs several times the first one means the first
  // of the records so called, and so on. Throws StoreError.
  RecordMeanings(std::shared_ptr<const odbstore::Reader> reader, const std::vector<std::string>& names);
  ~RecordMeanings();
  RecordMeanings(const RecordMeanings&) = delete;
  RecordMeanings& operator=(const RecordMeanings&) = delete;

  const std::vector<RecordMeaning>& all() const { return meanings_; }

  // Finds the places of those for which `isWanted`, which takes as long as extracting them. `configuration` is the file
  // that the extraction had, empty for none: then engineering extremes, which depend on its percentage, have no place.
  // Throws FileError.
  void locate(const inspect::ModelMesh& mesh, const std::string& configuration,
              const std::function<bool(const RecordMeaning&)>& isWanted);

 private:
  struct Records;
  std::unique_ptr<Records> records_;
  std::vector<RecordMeaning> meanings_;
};

}  // namespace report
