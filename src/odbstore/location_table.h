// The locations of a database that have been asked for.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "odbstore/stored_location.h"

namespace odbstore {

class DatabaseFile;

// Every block that lies at a location has the same object of it, so that labels are read once. One thread at a time.
class LocationTable {
 public:
  explicit LocationTable(std::shared_ptr<const DatabaseFile> file);

  const std::shared_ptr<const DatabaseFile>& file() const { return file_; }
  // Location `index` of the catalog.
  const std::shared_ptr<const StoredLocation>& at(std::size_t index);

 private:
  std::shared_ptr<const DatabaseFile> file_;
  std::vector<std::shared_ptr<const StoredLocation>> locations_;  // null where nobody has asked yet
};

}  // namespace odbstore
