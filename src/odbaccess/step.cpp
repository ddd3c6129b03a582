#include "odbaccess/guard.h"
#include "odbaccess/history_storage.h"
#include "odbaccess/odb_Step.h"
#include "odbaccess/step_storage.h"

namespace odb_detail {

const std::shared_ptr<const odbstore::StoredStep>& StepStorage::stored() {
  if (!stored_) stored_ = guarded([&] { return reader_->step(name_); });
  return stored_;
}

odb_HistoryRegionRepository& StepStorage::historyRegions() {
  if (!historyRegions_) {
    std::map<odb_String, odb_HistoryRegion> regions;
    for (const std::string& name : guarded([&] { return stored()->historyRegions(); })) {
      regions.emplace(odb_String(name),
                      odb_HistoryRegion(std::make_shared<const HistoryRegionStorage>(stored(), name)));
    }
    historyRegions_ = odb_HistoryRegionRepository(std::move(regions));
  }
  return *historyRegions_;
}

}  // namespace odb_detail

namespace {

const odbstore::FrameInfo& frameInfo(odb_detail::StepStorage& step, int index) {
  return odb_detail::guarded(
      [&]() -> const odbstore::FrameInfo& { return step.stored()->frames()[static_cast<std::size_t>(index)]; });
}

}  // namespace

int odb_Frame::incrementNumber() const { return frameInfo(*step_, index_).incrementNumber; }
double odb_Frame::frameValue() const { return frameInfo(*step_, index_).value; }
odb_String odb_Frame::description() const { return odb_String(frameInfo(*step_, index_).description); }

odb_FieldOutputRepository& odb_Frame::fieldOutputs() const {
  if (!content_) {
    std::map<odb_String, odb_FieldOutput> fields;
    const auto& stored =
        odb_detail::guarded([&]() -> const std::vector<odbstore::StoredField>& { return step_->stored()->fields(); });
    for (const odbstore::StoredField& field : stored) {
      if (!field.inFrame[static_cast<std::size_t>(index_)]) continue;
      fields.emplace(odb_String(field.name),
                     odb_FieldOutput(std::make_shared<const odb_detail::FieldStorage>(step_, field, index_)));
    }
    content_ = std::make_shared<odb_detail::FrameContent>(
        odb_detail::FrameContent{odb_FieldOutputRepository(std::move(fields))});
  }
  return content_->fields;
}

namespace {

odb_SequenceDouble sequence(const std::vector<double>& numbers) {
  return odb_SequenceDouble(std::span<const double>(numbers));
}

}  // namespace

odb_String odb_Step::name() const { return odb_String(storage_->name()); }
odb_String odb_Step::description() const { return odb_String(storage_->stored()->info().description); }
double odb_Step::mass() const { return storage_->stored()->info().mass; }
odb_SequenceDouble odb_Step::massCenter() const { return sequence(storage_->stored()->info().massCenter); }
odb_SequenceDouble odb_Step::inertiaAboutCenter() const {
  return sequence(storage_->stored()->info().inertiaAboutCenter);
}
odb_SequenceDouble odb_Step::inertiaAboutOrigin() const {
  return sequence(storage_->stored()->info().inertiaAboutOrigin);
}

odb_HistoryRegionRepository& odb_Step::historyRegions() const { return storage_->historyRegions(); }

odb_SequenceFrame& odb_Step::frames() const {
  if (!frames_) {
    std::vector<odb_Frame> frames;
    const std::size_t count = odb_detail::guarded([&] { return storage_->stored()->frames().size(); });
    for (std::size_t i = 0; i < count; ++i) frames.emplace_back(storage_, static_cast<int>(i));
    frames_ = std::make_shared<odb_SequenceFrame>(std::move(frames));
  }
  return *frames_;
}

odb_StepRepository::odb_StepRepository(const std::vector<odb_Step>& stepsInOrder) {
  std::map<odb_String, odb_Step> steps;
  for (const odb_Step& step : stepsInOrder) {
    order_.push_back(step.name());
    steps.emplace(step.name(), step);
  }
  steps_ = odb_Repository<odb_String, odb_Step>(std::move(steps));
}
