// Steps, behind the handles.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "odbaccess/location_cache.h"
#include "odbaccess/odb_HistoryRegion.h"
#include "odbstore/reader.h"

namespace odb_detail {

class StepStorage {
 public:
  StepStorage(std::shared_ptr<const odbstore::Reader> reader, std::shared_ptr<LocationCache> locations,
              std::string name)
      : reader_(std::move(reader)), locations_(std::move(locations)), name_(std::move(name)) {}

  const std::string& name() const { return name_; }
  LocationCache& locations() { return *locations_; }
  // The step of the file, opened at first use.
  const std::shared_ptr<const odbstore::StoredStep>& stored();

  odb_HistoryRegionRepository& historyRegions();

 private:
  std::shared_ptr<const odbstore::Reader> reader_;
  std::shared_ptr<LocationCache> locations_;
  std::string name_;
  std::shared_ptr<const odbstore::StoredStep> stored_;
  std::optional<odb_HistoryRegionRepository> historyRegions_;
};

}  // namespace odb_detail
