#include "odbaccess/step_storage.h"

#include <map>
#include <string>

#include "odbaccess/guard.h"
#include "odbaccess/history_region_storage.h"

namespace odb_detail {

const std::shared_ptr<const odbstore::StoredStep>& StepStorage::stored() {
  if (!stored_) stored_ = guarded([&] { return reader_->step(name_); });
  return stored_;
}

odb_HistoryRegionRepository& StepStorage::historyRegions() {
  if (!historyRegions_) {
    std::map<odb_String, odb_HistoryRegion> regions;
    for (const std::string& name : stored()->historyRegions()) {
      regions.emplace(odb_String(name),
                      odb_HistoryRegion(std::make_shared<const HistoryRegionStorage>(stored(), name)));
    }
    historyRegions_ = odb_HistoryRegionRepository(std::move(regions));
  }
  return *historyRegions_;
}

}  // namespace odb_detail
