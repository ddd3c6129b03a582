#include <span>

#include "odbaccess/guard.h"
#include "odbaccess/history_storage.h"
#include "odbaccess/odb_History.h"
#include "odbaccess/set_storage.h"

odb_String odb_HistoryOutput::name() const { return odb_String(storage_->name); }

odb_SequenceSequenceFloat odb_HistoryOutput::data() const {
  const odbstore::HistorySamples samples =
      odb_detail::guarded([&] { return storage_->step->historySamples(storage_->region, storage_->name); });
  const auto width = static_cast<std::size_t>(samples.width);
  const std::span<const float> numbers(samples.numbers);
  std::vector<odb_SequenceFloat> rows;
  rows.reserve(static_cast<std::size_t>(samples.samples));
  for (std::size_t i = 0; i < static_cast<std::size_t>(samples.samples); ++i) {
    rows.emplace_back(numbers.subspan(i * width, width));
  }
  return odb_SequenceSequenceFloat(std::move(rows));
}

odb_String odb_HistoryRegion::name() const { return odb_String(storage_->name()); }

odb_String odb_HistoryRegion::description() const { return odb_String(storage_->stored().info.description); }

odb_HistoryPoint odb_HistoryRegion::historyPoint() const {
  const odbstore::HistoryRegionInfo& info = storage_->stored().info;
  return odb_HistoryPoint(odb_Node(info.node), odb_Element(info.element), info.integrationPoint,
                          odb_SectionPoint(info.sectionPoint, odb_String(info.sectionPointDescription)),
                          odb_Set(std::make_shared<odb_detail::SetStorage>(info.set)));
}

odb_Repository<odb_String, odb_HistoryOutput> odb_HistoryRegion::historyOutputs() const {
  std::map<odb_String, odb_HistoryOutput> outputs;
  for (const std::string& name : storage_->stored().outputs) {
    outputs.emplace(odb_String(name), odb_HistoryOutput(std::make_shared<const odb_detail::HistoryOutputStorage>(
                                          storage_->step(), storage_->name(), name)));
  }
  return odb_Repository<odb_String, odb_HistoryOutput>(std::move(outputs));
}
