#include "odbaccess/odb_Step.h"

#include <span>
#include <vector>

#include "odbaccess/step_storage.h"

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
    const int count = storage_->stored()->frameCount();
    for (int i = 0; i < count; ++i) frames.emplace_back(storage_, i);
    frames_ = std::make_shared<odb_SequenceFrame>(std::move(frames));
  }
  return *frames_;
}
