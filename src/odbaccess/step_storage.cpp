#include "odbaccess/step_storage.h"

#include <map>
#include <string>
#include <utility>

#include "odbaccess/guard.h"
#include "odbaccess/history_region_storage.h"

namespace odb_detail {

const std::shared_ptr<const odbstore::StoredStep>& StepStorage::stored() {
  if (!stored_) stored_ = guarded([&] { return reader_->step(name_); });
  return stored_;
}

const std::shared_ptr<const FieldPlan>& StepStorage::plan(std::size_t index, int frame) {
  const std::vector<odbstore::StoredField>& fields = stored()->fields();
  plans_.resize(fields.size());
  std::shared_ptr<const FieldPlan>& plan = plans_[index];
  auto info = fields[index].infoIn(frame);
  if (!plan || &plan->info() != info.get()) {
    plan = std::make_shared<const FieldPlan>(stored(), fields[index], std::move(info), *locations_);
  }
  return plan;
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
