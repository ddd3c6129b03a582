// Steps, behind the handles.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "odbaccess/field_plan.h"
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
  // The step of the file, opened at first use.
  const std::shared_ptr<const odbstore::StoredStep>& stored();

  // Field `index` as it describes itself in a frame that has it; the same object as long as that stays the same.
  const std::shared_ptr<const FieldPlan>& plan(std::size_t index, int frame);

  odb_HistoryRegionRepository& historyRegions();

 private:
  std::shared_ptr<const odbstore::Reader> reader_;
  std::shared_ptr<LocationCache> locations_;
  std::string name_;
  std::shared_ptr<const odbstore::StoredStep> stored_;
  std::vector<std::shared_ptr<const FieldPlan>> plans_;  // of each field the one asked for last, or null
  std::optional<odb_HistoryRegionRepository> historyRegions_;
};

}  // namespace odb_detail
