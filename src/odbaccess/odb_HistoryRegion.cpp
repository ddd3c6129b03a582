#include "odbaccess/odb_HistoryRegion.h"

#include <map>

#include "odbaccess/history_output_storage.h"
#include "odbaccess/history_region_storage.h"
#include "odbaccess/set_storage.h"

odb_String odb_HistoryRegion::name() const { return odb_String(storage_->name()); }

odb_String odb_HistoryRegion::description() const { return odb_String(storage_->stored().info.description); }

odb_HistoryPoint odb_HistoryRegion::historyPoint() const {
  const odbstore::HistoryRegionInfo& info = storage_->stored().info;
  return odb_HistoryPoint(odb_Node(info.node), odb_Element(info.element), info.integrationPoint,
                          odb_SectionPoint(info.sectionPoint, odb_String(info.sectionPointDescription)),
                          odb_Set(std::make_shared<odb_detail::SetStorage>(odb_String(info.set))));
}

odb_Repository<odb_String, odb_HistoryOutput> odb_HistoryRegion::historyOutputs() const {
  std::map<odb_String, odb_HistoryOutput> outputs;
  for (const std::string& name : storage_->stored().outputs) {
    outputs.emplace(odb_String(name), odb_HistoryOutput(std::make_shared<const odb_detail::HistoryOutputStorage>(
                                          storage_->step(), storage_->name(), name)));
  }
  return odb_Repository<odb_String, odb_HistoryOutput>(std::move(outputs));
}
