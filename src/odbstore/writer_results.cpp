#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <string_view>
#include <type_traits>

#include "hdf5/file.h"
#include "odbstore/checksums.h"
#include "odbstore/names.h"
#include "odbstore/open_database.h"
#include "odbstore/writer_impl.h"

namespace odbstore {

namespace {

std::size_t hashOf(const std::vector<int>& labels) {
  const char* const bytes = reinterpret_cast<const char*>(labels.data());
  return std::hash<std::string_view>{}({bytes, labels.size() * sizeof(int)});
}

std::size_t hashOf(const LocationInfo& info, const LocationLabels& labels) {
  std::size_t hash = std::hash<std::string>{}(info.instance + '\n' + info.elementType + '\n');
  for (const std::size_t part : {static_cast<std::size_t>(info.position), static_cast<std::size_t>(info.sectionPoint),
                                 hashOf(labels.nodes), hashOf(labels.elements), hashOf(labels.integrationPoints)}) {
    hash = hash * 1099511628211U ^ part;
  }
  return hash;
}

}  // namespace

bool Writer::Impl::sameLocation(const LocationState& state, const LocationInfo& info,
                                const LocationLabels& labels) const {
  if (!(state.info == info)) return false;
  const auto equal = [&](const char* link, bool has, const std::vector<int>& values) {
    return !has || state.group.dataset(link).readInts() == values;
  };
  return equal(links::kNodeLabels, hasNodeLabels(info.position), labels.nodes) &&
         equal(links::kElementLabels, hasElementLabels(info.position), labels.elements) &&
         equal(links::kIntegrationPoints, hasIntegrationPoints(info.position), labels.integrationPoints);
}

LocationId Writer::Impl::addLocation(const LocationInfo& info, const LocationLabels& labels) {
  const std::size_t hash = hashOf(info, labels);
  const auto [first, last] = locationByHash_.equal_range(hash);
  for (auto at = first; at != last; ++at) {
    if (sameLocation(locations_[static_cast<std::size_t>(at->second)], info, labels)) return {at->second};
  }
  const int index = static_cast<int>(locations_.size());
  const h5::Group all = root().group(links::kLocations);
  std::optional<std::size_t> rows;
  for (const auto& [has, values] : {std::pair{hasNodeLabels(info.position), &labels.nodes},
                                    std::pair{hasElementLabels(info.position), &labels.elements},
                                    std::pair{hasIntegrationPoints(info.position), &labels.integrationPoints}}) {
    if (has ? rows && *rows != values->size() : !values->empty()) {
      all.fail(fmt::format("the labels do not fit the position {}", positionWord(info.position)));
    }
    if (has) rows = values->size();
  }
  const h5::Group group = all.createGroup(std::to_string(index));
  group.writeString(attributes::kInstance, info.instance);
  group.writeString(attributes::kPosition, std::string(positionWord(info.position)));
  group.writeString(attributes::kElementType, info.elementType);
  group.writeInt(attributes::kSectionPoint, info.sectionPoint);
  group.writeString(attributes::kSectionPointDescription, info.sectionPointDescription);
  if (hasNodeLabels(info.position)) group.createInts(links::kNodeLabels, labels.nodes);
  if (hasElementLabels(info.position)) group.createInts(links::kElementLabels, labels.elements);
  if (hasIntegrationPoints(info.position)) group.createInts(links::kIntegrationPoints, labels.integrationPoints);
  locations_.push_back({all.group(std::to_string(index)), info, static_cast<std::int64_t>(*rows)});
  locationByHash_.emplace(hash, index);
  return {index};
}

StepId Writer::Impl::addStep(const std::string& name, const StepInfo& info) {
  const h5::Group steps = root().group(links::kSteps);
  h5::Group group = steps.createGroup(linkFromName(name));
  group.writeString(attributes::kDescription, info.description);
  group.writeDouble(attributes::kMass, info.mass);
  group.writeDoubles(attributes::kMassCenter, info.massCenter);
  group.writeDoubles(attributes::kInertiaAboutCenter, info.inertiaAboutCenter);
  group.writeDoubles(attributes::kInertiaAboutOrigin, info.inertiaAboutOrigin);
  steps_.push_back({std::move(group), {}, {}, {}});
  return {static_cast<int>(steps_.size()) - 1};
}

StepState& Writer::Impl::step(StepId id) { return steps_.at(static_cast<std::size_t>(id.index)); }

h5::Group Writer::Impl::historyRegion(const HistoryRegionId& region) {
  return step(region.step).group.group(links::kHistory).group(linkFromName(region.name));
}

FrameId Writer::Impl::addFrame(StepId id, const FrameInfo& info) {
  std::vector<FrameInfo>& frames = step(id).frames;
  frames.push_back(info);
  return {id, static_cast<int>(frames.size()) - 1};
}

FieldId Writer::Impl::addField(FrameId frame, const std::string& name, const FieldInfo& info) {
  StepState& step = this->step(frame.step);
  const auto [known, isNew] = step.fieldIndex.emplace(name, static_cast<int>(step.fields.size()));
  if (isNew) {
    step.fields.push_back({name, info, {}, {}});
  }
  FieldState& field = step.fields[static_cast<std::size_t>(known->second)];
  if (!(field.info == info)) {
    step.group.fail(
        fmt::format("field \"{}\": frame {} describes it differently than the frames before", name, frame.index));
  }
  if (!field.nextBlock.emplace(frame.index, 0).second) {
    step.group.fail(fmt::format("field \"{}\": frame {} has it already", name, frame.index));
  }
  return {frame, known->second};
}

std::int64_t Writer::Impl::widthOf(const h5::Object& user, const LocationState& location, std::size_t numbers,
                                   int widthOfEmpty) const {
  if (location.rows == 0 && numbers == 0) return widthOfEmpty;
  const auto count = static_cast<std::int64_t>(numbers);
  if (location.rows == 0 || count == 0 || count % location.rows != 0) {
    user.fail(fmt::format("{} numbers do not fill {} rows", count, location.rows));
  }
  if (count > std::numeric_limits<int>::max()) user.fail("a frame of a block is too large");
  return count / location.rows;
}

void Writer::Impl::checkBlock(const h5::Object& user, const BlockState& block, const FieldInfo& field) const {
  const std::vector<std::string>& labels =
      block.componentLabels.empty() ? field.componentLabels : block.componentLabels;
  const auto count = static_cast<std::int64_t>(labels.size());
  if (count != 0 && count != block.width) {
    user.fail(fmt::format("rows of {} numbers do not fit {} component labels", block.width, count));
  }
  if (count == 0 && isTensorType(block.type) &&
      block.width > static_cast<std::int64_t>(defaultTensorLabels(block.type).size())) {
    user.fail(fmt::format("rows of {} numbers do not fit type {}", block.width, block.type));
  }
}

template <class Number>
void Writer::Impl::addBlock(FieldId id, LocationId location, std::span<const Number> rows,
                            const BlockOverrides& overrides, int widthOfEmpty) {
  const StepState& step = this->step(id.frame.step);
  const FieldInfo& info = step.fields.at(static_cast<std::size_t>(id.index)).info;
  const LocationState& place = locations_.at(static_cast<std::size_t>(location.index));
  BlockState block{location.index,
                   overrides.type.value_or(info.type),
                   overrides.componentLabels,
                   std::is_same_v<Number, double>,
                   widthOf(step.group, place, rows.size(), widthOfEmpty),
                   {}};
  if (block.componentLabels == info.componentLabels) block.componentLabels.clear();
  checkBlock(step.group, block, info);
  addSlab(id, std::move(block), {id.frame.index, spool_.append(rows.data(), rows.size_bytes())});
}

void Writer::Impl::addSlab(FieldId id, BlockState block, const Slab& slab) {
  FieldState& field = step(id.frame.step).fields.at(static_cast<std::size_t>(id.index));
  // The blocks of a frame keep their order: the next may only join a block behind the one before it.
  std::size_t& next = field.nextBlock.at(id.frame.index);
  while (next < field.blocks.size() && !field.blocks[next].takes(block)) ++next;
  if (next == field.blocks.size()) field.blocks.push_back(std::move(block));
  field.blocks[next++].slabs.push_back(slab);
}

template void Writer::Impl::addBlock(FieldId, LocationId, std::span<const float>, const BlockOverrides&, int);
template void Writer::Impl::addBlock(FieldId, LocationId, std::span<const double>, const BlockOverrides&, int);

KeptRows Writer::Impl::keepRows(std::span<const float> rows, int width) {
  const auto count = static_cast<std::int64_t>(rows.size());
  if (width < 1 || count % width != 0) root().fail(fmt::format("{} numbers are no rows of {}", count, width));
  return {spool_.append(rows.data(), rows.size_bytes()), count / width, width};
}

KeptPlaces Writer::Impl::keepPlaces(std::span<const int> places) {
  const auto [least, largest] = std::minmax_element(places.begin(), places.end());
  if (!places.empty() && *least < 0) root().fail(fmt::format("the place {} is none of a row", *least));
  return {spool_.append(places.data(), places.size_bytes()), static_cast<std::int64_t>(places.size()),
          places.empty() ? -1 : *largest};
}

void Writer::Impl::addBlock(FieldId id, LocationId location, const KeptRows& rows, const KeptPlaces& places) {
  const StepState& step = this->step(id.frame.step);
  const FieldInfo& info = step.fields.at(static_cast<std::size_t>(id.index)).info;
  const LocationState& place = locations_.at(static_cast<std::size_t>(location.index));
  if (places.count != place.rows) {
    step.group.fail(fmt::format("{} places do not fill {} rows", places.count, place.rows));
  }
  if (places.largest >= rows.rows) {
    step.group.fail(fmt::format("the row {} is not among {} rows", places.largest, rows.rows));
  }
  const auto numbers = static_cast<std::size_t>(places.count * rows.width);
  BlockState block{location.index, info.type, {}, false, widthOf(step.group, place, numbers, rows.width), {}};
  checkBlock(step.group, block, info);
  addSlab(id, std::move(block), {id.frame.index, rows.offset, std::pair{rows.rows, places}});
}

void Writer::Impl::expand(const Slab& slab, std::int64_t width, std::vector<float>& out) {
  const auto& [rows, places] = *slab.places;
  const auto fill = [this](auto& kept, std::int64_t& keptOffset, std::int64_t offset, std::int64_t count) {
    const auto numbers = static_cast<std::size_t>(count);
    if (keptOffset == offset && kept.size() == numbers) return;
    kept.resize(numbers);
    spool_.read(offset, kept.data(), numbers * sizeof(kept.front()));
    keptOffset = offset;
  };
  fill(keptRows_, keptRowsOffset_, slab.offset, rows * width);
  fill(keptPlaces_, keptPlacesOffset_, places.offset, places.count);
  const auto size = static_cast<std::size_t>(width);
  float* to = out.data();
  for (const int place : keptPlaces_) {
    to = std::copy_n(keptRows_.data() + static_cast<std::size_t>(place) * size, size, to);
  }
}

namespace {

void createFrameList(const h5::Group& group, const std::vector<int>& frames, std::size_t all) {
  if (frames.size() != all) group.createInts(links::kFrames, frames);
}

}  // namespace

void Writer::Impl::finishBlock(const h5::Group& blocks, std::size_t index, BlockState& block, const FieldState& field) {
  const h5::Group group = blocks.createGroup(std::to_string(index));
  group.writeString(attributes::kLocation, std::to_string(block.location));
  if (block.type != field.info.type) group.writeInt(attributes::kType, block.type);
  group.writeStrings(attributes::kComponentLabels, block.componentLabels);
  std::sort(block.slabs.begin(), block.slabs.end(), [](const Slab& a, const Slab& b) { return a.frame < b.frame; });
  std::vector<int> frames;
  for (const Slab& slab : block.slabs) frames.push_back(slab.frame);
  createFrameList(group, frames, field.nextBlock.size());

  const std::int64_t rows = locations_[static_cast<std::size_t>(block.location)].rows;
  h5::Dims dims = {block.slabs.size(), static_cast<hsize_t>(rows)};
  if (block.width != 1) dims.push_back(static_cast<hsize_t>(block.width));
  const h5::Dataset data = group.createDataset(links::kData, block.isDouble ? H5T_IEEE_F64LE : H5T_IEEE_F32LE, dims,
                                               {options_.compress, options_.checksum});
  const auto numbers = static_cast<std::size_t>(rows * block.width);
  const auto copySlabs = [&](auto number) {
    std::vector<decltype(number)> buffer(numbers);
    for (std::size_t i = 0; i < block.slabs.size(); ++i) {
      const Slab& slab = block.slabs[i];
      if constexpr (std::is_same_v<decltype(number), float>) {
        if (slab.places) expand(slab, block.width, buffer);
      }
      if (!slab.places) {
        spool_.read(slab.offset, buffer.data(), numbers * sizeof(number));
        // Room that is free again takes the next slab, so that the disk need not hold all rows twice.
        spool_.release(slab.offset, numbers * sizeof(number));
      }
      data.writeSlab(i, buffer.data());
    }
  };
  if (block.isDouble) {
    copySlabs(double{});
  } else {
    copySlabs(float{});
  }
}

void Writer::Impl::finishField(const h5::Group& fields, FieldState& field, std::size_t frames) {
  const h5::Group group = fields.createGroup(linkFromName(field.name));
  group.writeString(attributes::kDescription, field.info.description);
  group.writeInt(attributes::kType, field.info.type);
  group.writeStrings(attributes::kComponentLabels, field.info.componentLabels);
  group.writeInts(attributes::kValidInvariants, field.info.validInvariants);
  group.writeInt(attributes::kEngineeringShear, field.info.engineeringShear ? 1 : 0);
  std::vector<int> present;
  for (const auto& [frame, next] : field.nextBlock) present.push_back(frame);
  createFrameList(group, present, frames);
  const h5::Group blocks = group.createGroup(links::kBlocks);
  for (std::size_t k = 0; k < field.blocks.size(); ++k) finishBlock(blocks, k, field.blocks[k], field);
}

void Writer::Impl::finishStep(StepState& step) {
  std::vector<int> increments;
  std::vector<double> values;
  std::vector<std::string> descriptions;
  for (const FrameInfo& frame : step.frames) {
    increments.push_back(frame.incrementNumber);
    values.push_back(frame.value);
    descriptions.push_back(frame.description);
  }
  const h5::Group frames = step.group.createGroup(links::kFrames);
  frames.createInts(links::kIncrementNumber, increments);
  frames.createDoubles(links::kValue, values, {values.size()});
  frames.createStrings(links::kDescription, descriptions);
  const h5::Group fields = step.group.createGroup(links::kFields);
  for (FieldState& field : step.fields) finishField(fields, field, step.frames.size());
}

void Writer::Impl::finish() {
  for (StepState& step : steps_) finishStep(step);
  h5::flushFile(root());
  const ChecksumPlace checksums = reserveChecksums(root());
  h5::flushFile(root());
  steps_.clear();
  locations_.clear();
  root_.reset();
  // The pages are still in memory, and are so for the last time before they go to the disk.
  fillChecksums(file_.temporaryPath(), file_.finalPath(), checksums);
  // What HDF5 wrote while closing has to be whole as well, and it does not report failures of that.
  int layout = 0;
  openDatabase(file_.temporaryPath(), layout);
  if (own_) own_->publish();
}

}  // namespace odbstore
