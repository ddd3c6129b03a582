#include <fmt/format.h>

#include <algorithm>

#include "odbstore/names.h"
#include "odbstore/reader_internal.h"

namespace odbstore {

class StoredStep::Impl {
 public:
  Impl(std::shared_ptr<FileAccess> file, const std::string& name)
      : file_(std::move(file)),
        name_(name),
        group_(file_->root().group(links::kSteps).group(linkFromName(name))),
        info_(readStepInfo(group_)) {}

  const std::string& name() const { return name_; }
  const StepInfo& info() const { return info_; }
  const h5::Group& group() const { return group_; }

  const std::vector<FrameInfo>& frames() {
    if (!frames_) frames_ = readFrames();
    return *frames_;
  }

  const std::vector<StoredField>& fields() {
    if (!fields_) fields_ = readFields(*file_, group_, static_cast<int>(frames().size()));
    return *fields_;
  }

  h5::Group historyRegion(const std::string& region) const {
    return group_.group(links::kHistory).group(linkFromName(region));
  }

 private:
  std::vector<FrameInfo> readFrames() const {
    const std::optional<h5::Group> group = group_.findGroup(links::kFrames);
    if (!group) return {};
    const h5::Dataset increments = group->dataset(links::kIncrementNumber);
    const std::vector<int> incrementNumbers = increments.readInts();
    const std::vector<double> values = group->dataset(links::kValue).readDoubles();
    const h5::Dataset texts = group->dataset(links::kDescription);
    const std::vector<std::string> descriptions = texts.readStrings();
    if (increments.dims().size() != 1 || values.size() != incrementNumbers.size() ||
        descriptions.size() != incrementNumbers.size()) {
      group->fail("incrementNumber, value and description must have one entry per frame each");
    }
    std::vector<FrameInfo> frames(incrementNumbers.size());
    for (std::size_t i = 0; i < frames.size(); ++i) frames[i] = {incrementNumbers[i], values[i], descriptions[i]};
    return frames;
  }

  std::shared_ptr<FileAccess> file_;
  std::string name_;
  h5::Group group_;
  StepInfo info_;
  std::optional<std::vector<FrameInfo>> frames_;
  std::optional<std::vector<StoredField>> fields_;
};

namespace {

std::vector<double> vectorOfLength(const h5::Group& group, const std::string& attribute, std::size_t length) {
  std::vector<double> numbers = group.doublesAttribute(attribute);
  if (!numbers.empty() && numbers.size() != length) {
    group.fail(fmt::format("the attribute \"{}\" must hold {} numbers", attribute, length));
  }
  return numbers;
}

}  // namespace

StepInfo readStepInfo(const h5::Group& group) {
  return {group.stringAttribute(attributes::kDescription, ""), group.doubleAttribute(attributes::kMass, -1.0),
          vectorOfLength(group, attributes::kMassCenter, 3), vectorOfLength(group, attributes::kInertiaAboutCenter, 6),
          vectorOfLength(group, attributes::kInertiaAboutOrigin, 6)};
}

HistoryRegionInfo readHistoryRegionInfo(const h5::Group& group) {
  return {group.stringAttribute(attributes::kDescription, ""),
          group.intAttribute(attributes::kNode, -1),
          group.intAttribute(attributes::kElement, -1),
          group.intAttribute(attributes::kIntegrationPoint, 0),
          group.intAttribute(attributes::kSectionPoint, 0),
          group.stringAttribute(attributes::kSectionPointDescription, ""),
          group.stringAttribute(attributes::kSet, "")};
}

HistorySamples readHistorySamples(const h5::Dataset& dataset) {
  if (dataset.dims().size() != 2) dataset.fail("a history must have the shape [samples, numbers of a sample]");
  return {dataset.readFloats(), static_cast<std::int64_t>(dataset.dims()[0]),
          static_cast<std::int64_t>(dataset.dims()[1])};
}

StoredStep::StoredStep(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
StoredStep::~StoredStep() = default;

const std::string& StoredStep::name() const { return impl_->name(); }
const StepInfo& StoredStep::info() const { return impl_->info(); }
const std::vector<FrameInfo>& StoredStep::frames() const { return impl_->frames(); }
const std::vector<StoredField>& StoredStep::fields() const { return impl_->fields(); }

std::vector<std::string> StoredStep::historyRegions() const {
  return memberNames(impl_->group().findGroup(links::kHistory));
}

StoredHistoryRegion StoredStep::historyRegion(const std::string& region) const {
  const h5::Group group = impl_->historyRegion(region);
  return {region, readHistoryRegionInfo(group), memberNames(group.findGroup(links::kOutputs))};
}

HistorySamples StoredStep::historySamples(const std::string& region, const std::string& output) const {
  return readHistorySamples(impl_->historyRegion(region).group(links::kOutputs).dataset(linkFromName(output)));
}

std::shared_ptr<const StoredStep> openStep(std::shared_ptr<FileAccess> file, const std::string& name) {
  return std::make_shared<StoredStep>(std::make_unique<StoredStep::Impl>(std::move(file), name));
}

}  // namespace odbstore
