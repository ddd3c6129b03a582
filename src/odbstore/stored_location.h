// Where rows lie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "odbstore/schema.h"

namespace odbstore {

class DatabaseFile;

// A location of the file, shared by all blocks there. Labels are read at the first call and kept. Not thread-safe.
class StoredLocation {
 public:
  // Location `index` of the catalog.
  StoredLocation(std::shared_ptr<const DatabaseFile> file, std::size_t index);

  LocationInfo info() const;
  Position position() const;
  std::int64_t rows() const;

  // One label per row; empty if the position has no labels of the kind.
  const std::vector<int>& nodeLabels() const;
  const std::vector<int>& elementLabels() const;
  const std::vector<int>& integrationPoints() const;

  // How many rows blocks store here, and for each row which stored row it is. If isIndexed() is false, row i is stored
  // row i and rowOf() is empty. Stored rows are in the order of their first use, and each is used; any other index is a
  // StoreError.
  bool isIndexed() const;
  std::int64_t storedRows() const;
  const std::vector<int>& rowOf() const;

 private:
  const std::vector<int>& labels(std::int32_t array, const char* link, std::optional<std::vector<int>>& kept) const;

  std::shared_ptr<const DatabaseFile> file_;
  std::size_t index_;
  mutable std::optional<std::vector<int>> nodes_;
  mutable std::optional<std::vector<int>> elements_;
  mutable std::optional<std::vector<int>> points_;
  mutable std::optional<std::vector<int>> rowOf_;
};

}  // namespace odbstore
