#include "odbstore/stored_step.h"

#include <fmt/core.h>

#include <algorithm>

#include "odbstore/catalog_paths.h"
#include "odbstore/database_file.h"
#include "odbstore/frame_slabs.h"
#include "odbstore/location_table.h"

namespace odbstore {

namespace {

constexpr unsigned kHasMassCenter = 1;
constexpr unsigned kHasInertiaAboutCenter = 2;
constexpr unsigned kHasInertiaAboutOrigin = 4;

std::vector<double> momentsFrom(const double* numbers, std::size_t count, bool isGiven) {
  return isGiven ? std::vector<double>(numbers, numbers + count) : std::vector<double>();
}

}  // namespace

StoredStep::StoredStep(std::shared_ptr<LocationTable> locations, std::size_t index)
    : locations_(std::move(locations)), index_(index) {
  const Catalog& catalog = locations_->file()->catalog();
  name_ = catalog.text(catalog.columns().steps()->name()->Get(at(index_)));
}

StepInfo StoredStep::info() const {
  const Catalog& catalog = locations_->file()->catalog();
  const columns::Steps& steps = *catalog.columns().steps();
  const double* const moments = steps.moments()->data() + kMomentsOfStep * index_;
  const unsigned given = steps.given()->Get(at(index_));
  return {std::string(catalog.text(steps.description()->Get(at(index_)))), steps.mass()->Get(at(index_)),
          momentsFrom(moments, 3, (given & kHasMassCenter) != 0),
          momentsFrom(moments + 3, 6, (given & kHasInertiaAboutCenter) != 0),
          momentsFrom(moments + 9, 6, (given & kHasInertiaAboutOrigin) != 0)};
}

int StoredStep::frameCount() const {
  return static_cast<int>(
      Catalog::placesOf(locations_->file()->catalog().columns().steps()->frameEnd(), index_).size());
}

std::size_t StoredStep::placeOf(int frame) const {
  const columns::Catalog& columns = locations_->file()->catalog().columns();
  return Catalog::placesOf(columns.steps()->frameEnd(), index_).first + static_cast<std::size_t>(frame);
}

int StoredStep::incrementNumber(int frame) const {
  return locations_->file()->catalog().columns().frames()->incrementNumber()->Get(at(placeOf(frame)));
}

FrameInfo StoredStep::frame(int frame) const {
  const Catalog& catalog = locations_->file()->catalog();
  const columns::Frames& frames = *catalog.columns().frames();
  const auto i = at(placeOf(frame));
  return {frames.incrementNumber()->Get(i), frames.value()->Get(i),
          std::string(catalog.text(frames.description()->Get(i)))};
}

std::vector<FrameInfo> StoredStep::frames() const {
  std::vector<FrameInfo> frames;
  for (int i = 0; i < frameCount(); ++i) frames.push_back(frame(i));
  return frames;
}

const std::vector<StoredField>& StoredStep::fields() const {
  if (!fields_) fields_ = makeFields();
  return *fields_;
}

const StoredField* StoredStep::findField(const std::string& name) const {
  const auto found = std::lower_bound(fields().begin(), fields().end(), name,
                                      [](const StoredField& field, const std::string& n) { return field.name < n; });
  return found == fields().end() || found->name != name ? nullptr : &*found;
}

std::vector<StoredField> StoredStep::makeFields() const {
  const std::shared_ptr<const DatabaseFile>& file = locations_->file();
  const columns::Catalog& columns = file->catalog().columns();
  const auto allFrames = std::make_shared<const FrameSlabs>(frameCount());
  std::vector<StoredField> fields;
  const Places places = Catalog::placesOf(columns.steps()->fieldEnd(), index_);
  fields.reserve(places.size());
  for (std::size_t i = places.first; i < places.end; ++i) {
    const std::int32_t list = columns.fields()->frames()->Get(at(i));
    const auto frames = list == kNone ? allFrames : std::make_shared<const FrameSlabs>(file->catalog().list(list));
    fields.emplace_back(file, frames, makeBlocks(i, frames), i);
  }
  return fields;
}

std::vector<StoredBlock> StoredStep::makeBlocks(std::size_t field,
                                                const std::shared_ptr<const FrameSlabs>& frames) const {
  const std::shared_ptr<const DatabaseFile>& file = locations_->file();
  const columns::Catalog& columns = file->catalog().columns();
  std::vector<StoredBlock> blocks;
  const Places places = Catalog::placesOf(columns.fields()->blockEnd(), field);
  blocks.reserve(places.size());
  for (std::size_t i = places.first; i < places.end; ++i) {
    const std::int32_t list = columns.blocks()->frames()->Get(at(i));
    const bool isOwn = list != kNone && list != columns.fields()->frames()->Get(at(field));
    blocks.emplace_back(file, locations_->at(static_cast<std::size_t>(columns.blocks()->location()->Get(at(i)))),
                        isOwn ? std::make_shared<const FrameSlabs>(file->catalog().list(list)) : frames, index_, field,
                        i);
  }
  return blocks;
}

std::vector<std::string> StoredStep::historyRegions() const {
  const Catalog& catalog = locations_->file()->catalog();
  std::vector<std::string> names;
  const Places regions = Catalog::placesOf(catalog.columns().steps()->regionEnd(), index_);
  for (std::size_t i = regions.first; i < regions.end; ++i) {
    names.emplace_back(catalog.text(catalog.columns().regions()->name()->Get(at(i))));
  }
  return names;
}

std::size_t StoredStep::findRegion(const std::string& region) const {
  const std::shared_ptr<const DatabaseFile>& file = locations_->file();
  const Catalog& catalog = file->catalog();
  const Places regions = Catalog::placesOf(catalog.columns().steps()->regionEnd(), index_);
  const std::optional<std::size_t> found = catalog.find(catalog.columns().regions()->name(), regions, region);
  if (!found) file->fail(stepPath(catalog, index_), fmt::format("there is no history region \"{}\"", region));
  return *found;
}

StoredHistoryRegion StoredStep::historyRegion(const std::string& region) const {
  const Catalog& catalog = locations_->file()->catalog();
  const columns::HistoryRegions& regions = *catalog.columns().regions();
  const std::size_t place = findRegion(region);
  const auto i = at(place);
  const auto textOf = [&](const flatbuffers::Vector<std::int32_t>* column) {
    return std::string(catalog.text(column->Get(i)));
  };
  StoredHistoryRegion found{region,
                            {textOf(regions.description()), regions.node()->Get(i), regions.element()->Get(i),
                             regions.integrationPoint()->Get(i), regions.sectionPoint()->Get(i),
                             textOf(regions.sectionPointDescription()), textOf(regions.set())},
                            {}};
  const Places outputs = Catalog::placesOf(regions.outputEnd(), place);
  for (std::size_t k = outputs.first; k < outputs.end; ++k) {
    found.outputs.emplace_back(catalog.text(catalog.columns().outputs()->name()->Get(at(k))));
  }
  return found;
}

HistorySamples StoredStep::historySamples(const std::string& region, const std::string& output) const {
  const std::shared_ptr<const DatabaseFile>& file = locations_->file();
  const Catalog& catalog = file->catalog();
  const columns::HistoryOutputs& outputs = *catalog.columns().outputs();
  const std::size_t place = findRegion(region);
  const Places all = Catalog::placesOf(catalog.columns().regions()->outputEnd(), place);
  const std::optional<std::size_t> found = catalog.find(outputs.name(), all, output);
  if (!found) file->fail(regionPath(catalog, index_, place), fmt::format("there is no history \"{}\"", output));
  const auto i = at(*found);
  const std::int64_t samples = outputs.samples()->Get(i);
  const std::int64_t width = outputs.width()->Get(i);
  return {file->readFloats(outputs.data()->Get(i), outputs.first()->Get(i), samples * width,
                           [&] { return outputPath(catalog, index_, place, *found); }),
          samples, width};
}

}  // namespace odbstore
