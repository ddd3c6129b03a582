#include "odbwriter/database_writer.h"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

#include "base/control_characters.h"
#include "odbstore/layout.h"
#include "odbstore/names.h"
#include "odbstore/store_error.h"
#include "odbwriter/database_writer_impl.h"
#include "odbwriter/row_index.h"

namespace odbstore {

namespace {

std::size_t hashOf(const std::vector<int>& numbers) {
  const char* const bytes = reinterpret_cast<const char*>(numbers.data());
  return std::hash<std::string_view>{}({bytes, numbers.size() * sizeof(int)});
}

std::size_t hashOf(const LocationInfo& info, const LocationLabels& labels, const std::vector<int>& rowOf) {
  std::size_t hash = std::hash<std::string>{}(info.instance + '\n' + info.elementType + '\n');
  for (const std::size_t part :
       {static_cast<std::size_t>(info.position), static_cast<std::size_t>(info.sectionPoint), hashOf(labels.nodes),
        hashOf(labels.elements), hashOf(labels.integrationPoints), hashOf(rowOf)}) {
    hash = hash * 1099511628211U ^ part;
  }
  return hash;
}

// How many stored rows there are, or nothing if they are not numbered in the order of their first use.
std::optional<std::int64_t> storedRowsOf(const std::vector<int>& rowOf) {
  int due = 0;
  for (const int row : rowOf) {
    if (row < 0 || row > due) return std::nullopt;
    if (row == due) ++due;
  }
  return due;
}

}  // namespace

void DatabaseWriter::Impl::fail(const std::string& object, const std::string& reason) const {
  throw StoreError(name_, object, reason);
}

void DatabaseWriter::Impl::requireName(const std::string& name, const std::string& path) const {
  if (name.empty()) fail(path, "a name is empty");
  if (base::hasControlCharacter(name)) fail(path, "the name has a control character");
}

DeclaredInstance& DatabaseWriter::Impl::instance(const std::string& name) {
  const auto known = model_.instances.find(name);
  if (known == model_.instances.end()) fail(ownerPath({OwnerKind::instance, name}), "is not there");
  return known->second;
}

void DatabaseWriter::Impl::addSet(const Owner& owner, SetKind kind, const std::string& name,
                                  std::vector<SetMembers> members) {
  const std::string path = ownerPath(owner) + "/" + setsLink(kind) + "/" + linkFromName(name);
  requireName(name, path);
  const SetsKey key{owner.kind, owner.name, kind};
  if (structure_ && structure_->places().sets.contains(key))
    fail(path, "comes after the other sets of its owner were laid out");
  if (owner.kind == OwnerKind::instance) static_cast<void>(instance(owner.name));
  if (owner.kind == OwnerKind::part && !model_.parts.contains(owner.name)) fail(ownerPath(owner), "is not there");
  if (owner.kind != OwnerKind::assembly && members.size() != 1) fail(path, "must have one list of labels");
  std::set<std::string> instances;
  for (const SetMembers& member : members) {
    if (owner.kind != OwnerKind::assembly) continue;
    requireName(member.instance, path);
    if (!instances.insert(member.instance).second)
      fail(path, fmt::format("has the instance \"{}\" twice", member.instance));
  }
  if (!model_.sets[key].emplace(name, std::move(members)).second) {
    fail(path, "is there already");
  }
}

bool DatabaseWriter::Impl::isLocation(std::size_t index, const LocationInfo& info, const LocationLabels& labels,
                                      const std::vector<int>& rowOf) const {
  const DeclaredLocation& known = model_.locations[index];
  if (!(known.info == info)) return false;
  const bool hasRoom =
      structure_ && index < structure_->places().locations.size() && structure_->places().locations[index].hasRoom;
  if (!hasRoom) return known.labels == labels && known.rowOf == rowOf;
  // Written data are only in the file.
  const ModelArrays::Location& places = structure_->places().locations[index];
  const auto isStored = [this](std::size_t array, const std::vector<int>& numbers) {
    return array == kNoArray ? numbers.empty() : arrays_->holds(array, std::as_bytes(std::span(numbers)));
  };
  const bool hasIndex = known.isIndexed ? isStored(places.rowOf, rowOf) : known.rowOf == rowOf;
  return hasIndex && isStored(places.nodes, labels.nodes) && isStored(places.elements, labels.elements) &&
         isStored(places.points, labels.integrationPoints);
}

DatabaseWriter::Location DatabaseWriter::Impl::addLocation(const LocationInfo& info, LocationLabels labels,
                                                           std::vector<int> rowOf) {
  const std::string path = std::string("/") + links::kLocations;
  const std::size_t hash = hashOf(info, labels, rowOf);
  const auto [first, last] = locationByHash_.equal_range(hash);
  for (auto at = first; at != last; ++at) {
    if (isLocation(static_cast<std::size_t>(at->second), info, labels, rowOf)) return {at->second};
  }
  std::optional<std::size_t> rows;
  for (const auto& [has, values] : {std::pair{hasNodeLabels(info.position), &labels.nodes},
                                    std::pair{hasElementLabels(info.position), &labels.elements},
                                    std::pair{hasIntegrationPoints(info.position), &labels.integrationPoints}}) {
    if (has ? rows && *rows != values->size() : !values->empty()) {
      fail(path, fmt::format("the labels do not fit the position {}", positionWord(info.position)));
    }
    if (has) rows = values->size();
  }
  if (*rows > static_cast<std::size_t>(std::numeric_limits<int>::max())) fail(path, "a location has too many rows");
  DeclaredLocation location{info, std::move(labels), std::move(rowOf), static_cast<std::int64_t>(*rows), 0, false};
  location.delivered = location.rows;
  if (!location.rowOf.empty()) {
    const std::optional<std::int64_t> stored = storedRowsOf(location.rowOf);
    if (location.rowOf.size() != *rows || !stored) {
      fail(path, "an index of rows must have one number for each row, in the order of their first use");
    }
    location.delivered = *stored;
    location.isIndexed = isIndexWorthwhile(location.rows, *stored);
  }
  const int index = static_cast<int>(model_.locations.size());
  model_.locations.push_back(std::move(location));
  locationByHash_.emplace(hash, index);
  return {index};
}

DatabaseWriter::Step DatabaseWriter::Impl::addStep(const std::string& name, const StepInfo& info) {
  DeclaredStep step;
  step.name = name;
  step.info = info;
  requireName(name, pathOf(step));
  for (const auto& [numbers, count] : {std::pair(&info.massCenter, 3U), std::pair(&info.inertiaAboutCenter, 6U),
                                       std::pair(&info.inertiaAboutOrigin, 6U)}) {
    if (!numbers->empty() && numbers->size() != count) {
      fail(pathOf(step), fmt::format("a vector of its mass must have {} numbers", count));
    }
  }
  for (const DeclaredStep& other : model_.steps) {
    if (other.name == name) fail(pathOf(step), "is there already");
  }
  model_.steps.push_back(std::move(step));
  return {static_cast<int>(model_.steps.size()) - 1};
}

DatabaseWriter::Field DatabaseWriter::Impl::addField(Step id, const std::string& name, const FieldInfo& info) {
  DeclaredStep& step = model_.steps.at(static_cast<std::size_t>(id.index));
  DeclaredField field;
  field.step = id.index;
  field.name = name;
  field.info = info;
  const std::string path = pathOf(model_, field);
  requireName(name, path);
  if (!step.fields.emplace(name, static_cast<int>(model_.fields.size())).second) fail(path, "is there already");
  model_.fields.push_back(std::move(field));
  return {static_cast<int>(model_.fields.size()) - 1};
}

void DatabaseWriter::Impl::requireFrame(const DeclaredField& field, int frame) const {
  const auto frames = static_cast<int>(model_.stepOf(field).frames.size());
  if (frame < 0 || frame >= frames) {
    fail(pathOf(model_, field), fmt::format("frame {} is out of range 0..{}", frame, frames - 1));
  }
}

void DatabaseWriter::Impl::describeField(Field id, int frame, const FieldInfo& info) {
  DeclaredField& field = model_.fields.at(static_cast<std::size_t>(id.index));
  requireFrame(field, frame);
  if (info == field.info) {
    field.changes.erase(frame);
  } else {
    field.changes.insert_or_assign(frame, info);
  }
}

DatabaseWriter::Block DatabaseWriter::Impl::addBlock(Field id, Location location, BlockForm form) {
  DeclaredField& field = model_.fields.at(static_cast<std::size_t>(id.index));
  DeclaredBlock block{id.index, location.index, std::move(form), field.blocks.size()};
  const DeclaredLocation& place = model_.locations.at(static_cast<std::size_t>(location.index));
  const std::string path = pathOf(model_, block);
  if (block.form.width < 1) fail(path, fmt::format("rows cannot have {} numbers", block.form.width));
  if (place.stored() * block.form.width > std::numeric_limits<int>::max()) fail(path, "a frame of it is too large");
  if (block.form.frames) {
    int before = -1;
    for (const int frame : *block.form.frames) {
      requireFrame(field, frame);
      if (frame <= before) fail(path, "its frames are not ascending");
      before = frame;
    }
  }
  const bool hasFrames = block.form.frames && !block.form.frames->empty();
  const auto change = field.changes.find(hasFrames ? block.form.frames->front() : 0);
  const FieldInfo& info = change == field.changes.end() ? field.info : change->second;
  const int type = block.form.type.value_or(info.type);
  const std::size_t labels =
      block.form.componentLabels.empty() ? info.componentLabels.size() : block.form.componentLabels.size();
  if (labels != 0 && labels != static_cast<std::size_t>(block.form.width)) {
    fail(path, fmt::format("rows of {} numbers do not fit {} component labels", block.form.width, labels));
  }
  if (labels == 0 && isTensorType(type) &&
      static_cast<std::size_t>(block.form.width) > defaultTensorLabels(type).size()) {
    fail(path, fmt::format("rows of {} numbers do not fit type {}", block.form.width, type));
  }
  const int index = static_cast<int>(model_.blocks.size());
  field.blocks.push_back(index);
  model_.blocks.push_back(std::move(block));
  return {index};
}

// Histories of a step share their arrays.
void DatabaseWriter::Impl::requireOpenHistories(int step, const std::string& path) const {
  const auto index = static_cast<std::size_t>(step);
  const bool hasRoom =
      structure_ && index < structure_->places().hasHistories.size() && structure_->places().hasHistories[index];
  if (hasRoom) fail(path, "comes after the other histories of its step were laid out");
}

DatabaseWriter::Region DatabaseWriter::Impl::addHistoryRegion(Step id, const std::string& name,
                                                              const HistoryRegionInfo& info) {
  DeclaredStep& step = model_.steps.at(static_cast<std::size_t>(id.index));
  const std::string path = pathOf(step) + "/" + links::kHistory + "/" + linkFromName(name);
  requireName(name, path);
  if (base::hasControlCharacter(info.set)) fail(path, "the name of its set has a control character");
  requireOpenHistories(id.index, path);
  if (!step.regions.emplace(name, static_cast<int>(model_.regions.size())).second) fail(path, "is there already");
  model_.regions.push_back({id.index, name, info, {}});
  return {static_cast<int>(model_.regions.size()) - 1};
}

DatabaseWriter::History DatabaseWriter::Impl::addHistory(Region id, const std::string& name, std::int64_t samples,
                                                         std::int64_t width) {
  DeclaredRegion& region = model_.regions.at(static_cast<std::size_t>(id.index));
  const DeclaredHistory history{id.index, name, samples, width};
  const std::string path = pathOf(model_, history);
  requireName(name, path);
  if (samples < 0 || width < 0 || width > std::numeric_limits<int>::max() ||
      (width > 0 && samples > std::numeric_limits<std::int64_t>::max() / 8 / width)) {
    fail(path, fmt::format("there cannot be {} samples of {} numbers", samples, width));
  }
  requireOpenHistories(region.step, path);
  if (!region.outputs.emplace(name, static_cast<int>(model_.histories.size())).second) fail(path, "is there already");
  model_.histories.push_back(history);
  return {static_cast<int>(model_.histories.size()) - 1};
}

DatabaseWriter::DatabaseWriter(const std::string& path, WriterOptions options)
    : impl_(std::make_unique<Impl>(std::make_unique<base::OutputFile>(path), options)) {}

DatabaseWriter::DatabaseWriter(const std::string& temporaryPath, const std::string& name, WriterOptions options)
    : impl_(std::make_unique<Impl>(temporaryPath, name, options)) {}

DatabaseWriter::~DatabaseWriter() = default;

void DatabaseWriter::setName(const std::string& name) { impl_->model().names.name = name; }
void DatabaseWriter::setTitle(const std::string& title) { impl_->model().names.title = title; }
void DatabaseWriter::setProducer(const std::string& producer) { impl_->model().names.producer = producer; }
void DatabaseWriter::setAssemblyName(const std::string& name) { impl_->model().names.assembly = name; }
void DatabaseWriter::setSymmetryAxis(const std::array<float, 6>& axis) { impl_->model().symmetryAxis = axis; }

void DatabaseWriter::addPart(const std::string& name) {
  const std::string path = ownerPath({OwnerKind::part, name});
  impl_->requireName(name, path);
  if (!impl_->model().parts.insert(name).second) impl_->fail(path, "is there already");
}

void DatabaseWriter::addInstance(const std::string& name, const std::string& part) {
  const std::string path = ownerPath({OwnerKind::instance, name});
  impl_->requireName(name, path);
  DeclaredInstance instance;
  instance.part = part;
  if (!impl_->model().instances.emplace(name, std::move(instance)).second) impl_->fail(path, "is there already");
}

void DatabaseWriter::addNodes(const std::string& instance, std::vector<int> labels, std::vector<double> coordinates) {
  DeclaredInstance& owner = impl_->instance(instance);
  const std::string path = ownerPath({OwnerKind::instance, instance}) + "/" + links::kMesh + "/" + links::kNodes;
  if (owner.hasNodes) impl_->fail(path, "is there already");
  if (coordinates.size() != 3 * labels.size()) impl_->fail(path, "there must be three coordinates for each node label");
  owner.hasNodes = true;
  owner.nodes = std::move(labels);
  owner.coordinates = std::move(coordinates);
}

void DatabaseWriter::addElements(const std::string& instance, const std::string& type, std::vector<int> labels,
                                 std::vector<int> connectivity) {
  const std::string path = ownerPath({OwnerKind::instance, instance}) + "/" + links::kMesh + "/" + links::kElements +
                           "/" + linkFromName(type);
  DeclaredInstance& owner = impl_->instance(instance);
  impl_->requireName(type, path);
  if (labels.empty() ? !connectivity.empty() : connectivity.size() % labels.size() != 0) {
    impl_->fail(path, "every element must have the same number of nodes");
  }
  if (!owner.elements.emplace(type, DeclaredElements{std::move(labels), std::move(connectivity)}).second) {
    impl_->fail(path, "is there already");
  }
}

void DatabaseWriter::addSet(const Owner& owner, SetKind kind, const std::string& name,
                            std::vector<SetMembers> members) {
  impl_->addSet(owner, kind, name, std::move(members));
}

DatabaseWriter::Location DatabaseWriter::addLocation(const LocationInfo& info, LocationLabels labels,
                                                     std::vector<int> rowOf) {
  return impl_->addLocation(info, std::move(labels), std::move(rowOf));
}

std::int64_t DatabaseWriter::deliveredRows(Location location) const {
  return impl_->model().locations.at(static_cast<std::size_t>(location.index)).delivered;
}

DatabaseWriter::Step DatabaseWriter::addStep(const std::string& name, const StepInfo& info) {
  return impl_->addStep(name, info);
}

int DatabaseWriter::addFrame(Step step, const FrameInfo& info) {
  std::vector<FrameInfo>& frames = impl_->model().steps.at(static_cast<std::size_t>(step.index)).frames;
  frames.push_back(info);
  return static_cast<int>(frames.size()) - 1;
}

DatabaseWriter::Field DatabaseWriter::addField(Step step, const std::string& name, const FieldInfo& info) {
  return impl_->addField(step, name, info);
}

void DatabaseWriter::addFieldFrame(Field field, int frame) {
  DeclaredField& declared = impl_->model().fields.at(static_cast<std::size_t>(field.index));
  impl_->requireFrame(declared, frame);
  declared.frames.insert(frame);
}

void DatabaseWriter::describeField(Field field, int frame, const FieldInfo& info) {
  impl_->describeField(field, frame, info);
}

DatabaseWriter::Block DatabaseWriter::addBlock(Field field, Location location, BlockForm form) {
  return impl_->addBlock(field, location, std::move(form));
}

DatabaseWriter::Region DatabaseWriter::addHistoryRegion(Step step, const std::string& name,
                                                        const HistoryRegionInfo& info) {
  return impl_->addHistoryRegion(step, name, info);
}

DatabaseWriter::History DatabaseWriter::addHistory(Region region, const std::string& name, std::int64_t samples,
                                                   std::int64_t width) {
  return impl_->addHistory(region, name, samples, width);
}

void DatabaseWriter::layOut() { impl_->layOut(); }

void DatabaseWriter::writeRows(Block block, int frame, std::span<const float> rows) {
  impl_->writeRows(block, frame, rows);
}

void DatabaseWriter::writeRows(Block block, int frame, std::span<const double> rows) {
  impl_->writeRows(block, frame, rows);
}

void DatabaseWriter::writeSamples(History history, std::span<const float> samples) {
  impl_->writeSamples(history, samples);
}

void DatabaseWriter::finish() { impl_->finish(); }

}  // namespace odbstore
