// The locations of a database that have been asked for.
#pragma once

#include <map>
#include <memory>

#include "odbaccess/location_storage.h"
#include "odbaccess/read_ahead.h"
#include "odbstore/reader.h"

namespace odb_detail {

// One location object for each location of the file.
class LocationCache {
 public:
  LocationCache();

  std::shared_ptr<LocationStorage> of(const std::shared_ptr<const odbstore::StoredLocation>& stored);

 private:
  std::shared_ptr<ReadAhead> readAhead_;
  std::map<const odbstore::StoredLocation*, std::shared_ptr<LocationStorage>> locations_;
};

}  // namespace odb_detail
