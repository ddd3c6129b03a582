#include "odbstore/location_table.h"

#include "odbstore/database_file.h"

namespace odbstore {

LocationTable::LocationTable(std::shared_ptr<const DatabaseFile> file)
    : file_(std::move(file)), locations_(file_->catalog().columns().locations()->id()->size()) {}

const std::shared_ptr<const StoredLocation>& LocationTable::at(std::size_t index) {
  std::shared_ptr<const StoredLocation>& location = locations_[index];
  if (!location) location = std::make_shared<const StoredLocation>(file_, index);
  return location;
}

}  // namespace odbstore
