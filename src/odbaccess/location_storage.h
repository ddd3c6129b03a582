// Where rows lie, behind the handles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "odbaccess/distinct_rows.h"
#include "odbaccess/label_index.h"
#include "odbaccess/read_ahead.h"
#include "odbaccess/row_selection.h"
#include "odbaccess/set_storage.h"
#include "odbstore/reader.h"

namespace odb_detail {

using SharedRows = std::shared_ptr<const RowSelection>;

// A location of the file with what has been derived from it, shared by all blocks that lie there.
class LocationStorage {
 public:
  LocationStorage(std::shared_ptr<const odbstore::StoredLocation> stored, std::shared_ptr<ReadAhead> readAhead)
      : stored_(std::move(stored)), info_(stored_->info()), readAhead_(std::move(readAhead)) {}

  const odbstore::LocationInfo& info() const { return info_; }
  std::int64_t rows() const { return stored_->rows(); }
  // Of each row the stored row that it is; null where row i is stored row i.
  const int* rowOf() const;
  const std::vector<int>& nodeLabels() const;
  const std::vector<int>& elementLabels() const;
  const std::vector<int>& integrationPoints() const;
  int numberOfElements();

  // The rows, ascending, that belong to a set.
  SharedRows rowsIn(const std::shared_ptr<SetStorage>& set);

  // The stored rows that a selection leads to, or all rows do where it is null; there must be at least one row, and an
  // index.
  std::shared_ptr<const DistinctRows> distinctRowsOf(const SharedRows& selection);

  // The reader of large blocks, one for the database.
  ReadAhead& readAhead() const { return *readAhead_; }

 private:
  std::shared_ptr<const odbstore::StoredLocation> stored_;
  odbstore::LocationInfo info_;
  std::shared_ptr<ReadAhead> readAhead_;
  std::unique_ptr<LabelIndex> nodeIndex_;
  std::unique_ptr<LabelIndex> elementIndex_;
  std::optional<int> numberOfElements_;
  // Found rows by set, as far as they are few enough to be kept.
  std::unordered_map<std::shared_ptr<SetStorage>, SharedRows> rowsOfSets_;
  std::unordered_map<SharedRows, std::shared_ptr<const DistinctRows>> distinctRows_;
  std::size_t keptRows_ = 0;
};

}  // namespace odb_detail
