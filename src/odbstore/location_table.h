// The locations of a database, made when first used.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "odbstore/stored_location.h"

namespace odbstore {

class DatabaseFile;

// All blocks at a location share one object, so that labels are read once. Not thread-safe.
class LocationTable {
 public:
  explicit LocationTable(std::shared_ptr<const DatabaseFile> file);

  const std::shared_ptr<const DatabaseFile>& file() const { return file_; }
  // Location `index` of the catalog.
  const std::shared_ptr<const StoredLocation>& at(std::size_t index);

 private:
  std::shared_ptr<const DatabaseFile> file_;
  std::vector<std::shared_ptr<const StoredLocation>> locations_;  // null until first used
};

}  // namespace odbstore
