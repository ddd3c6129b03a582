#include "odbwriter/structure_writer.h"

#include <fmt/core.h>

#include <algorithm>

#include "odbstore/layout.h"
#include "odbstore/names.h"
#include "odbwriter/row_index.h"

namespace odbstore {

namespace {

constexpr std::int64_t kBytesOfObject = 512;
constexpr std::int64_t kLeastStructure = 2048;
constexpr std::int64_t kMostStructure = std::int64_t{1} << 20U;

std::int64_t countOf(const auto& container) { return static_cast<std::int64_t>(container.size()); }

// Paths from the root, as HDF5 takes them.
std::string inRoot(const std::string& path) { return path.substr(1); }
std::string inRoot(const std::string& path, const char* link) { return path.substr(1) + "/" + link; }

void writeText(const h5::Group& group, const char* attribute, const std::optional<std::string>& text) {
  if (text) group.writeString(attribute, *text);
}

void writeInfo(const h5::Group& group, const FieldInfo& info) {
  group.writeString(attributes::kDescription, info.description);
  group.writeInt(attributes::kType, info.type);
  group.writeStrings(attributes::kComponentLabels, info.componentLabels);
  group.writeInts(attributes::kValidInvariants, info.validInvariants);
  group.writeInt(attributes::kEngineeringShear, info.engineeringShear ? 1 : 0);
}

void writeFrames(const h5::Group& frames, const DeclaredStep& step) {
  std::vector<int> increments;
  std::vector<double> values;
  std::vector<std::string> descriptions;
  for (const FrameInfo& frame : step.frames) {
    increments.push_back(frame.incrementNumber);
    values.push_back(frame.value);
    descriptions.push_back(frame.description);
  }
  frames.createInts(links::kIncrementNumber, increments);
  frames.createDoubles(links::kValue, values, {values.size()});
  frames.createStrings(links::kDescription, descriptions);
}

template <class Value, class Of>
std::vector<Value> columnOf(const std::vector<const DeclaredRegion*>& regions, Of&& of) {
  std::vector<Value> column;
  for (const DeclaredRegion* region : regions) column.push_back(of(*region));
  return column;
}

}  // namespace

StructureWriter::StructureWriter(const h5::Group& root, const DeclaredModel& model, const WriterOptions& options,
                                 ArrayWriter& arrays)
    : root_(root), model_(model), options_(options), arrays_(arrays) {}

h5::Group StructureWriter::groupAt(const std::string& path, bool trackOrder) {
  if (made_.contains(path)) return root_.group(path);
  const std::size_t slash = path.rfind('/');
  if (slash != std::string::npos) groupAt(path.substr(0, slash));
  made_.insert(path);
  return root_.createGroup(path, trackOrder);
}

// Steps are ordered by their creation.
void StructureWriter::makeStepGroups() {
  if (madeSteps_ == 0) groupAt(links::kSteps, true);
  for (; madeSteps_ < model_.steps.size(); ++madeSteps_) groupAt(inRoot(pathOf(model_.steps[madeSteps_])));
}

// Room for an array; the data set's name is its path from the root. Returns the byte at which it starts.
std::int64_t StructureWriter::reserve(const std::string& path, base::NumberFormat format, const h5::Dims& dims) {
  groupAt(path.substr(0, path.rfind('/')));
  h5::Storage storage;
  storage.reserved = true;
  const h5::Dataset dataset = root_.createDataset(path, format, dims, storage);
  const std::optional<std::int64_t> offset = dataset.offset();
  if (dataset.count() > 0 && !offset) dataset.fail("has no room in the file");
  return offset.value_or(0);
}

// The same of an array that is one slab.
std::size_t StructureWriter::reserveWhole(const std::string& path, base::NumberFormat format, const h5::Dims& dims) {
  std::int64_t numbers = 1;
  for (const hsize_t d : dims) numbers *= static_cast<std::int64_t>(d);
  return arrays_.addContiguous(format, 1, numbers, reserve(path, format, dims));
}

std::size_t StructureWriter::reserveInts(const std::string& path, std::size_t count) {
  return reserveWhole(path, base::NumberFormat::int32, {count});
}

void StructureWriter::reserveMesh(const std::string& name) {
  const DeclaredInstance& instance = model_.instances.at(name);
  const std::string mesh = inRoot(ownerPath({OwnerKind::instance, name}), links::kMesh) + "/";
  ModelArrays::Mesh& places = places_.meshes[name];
  if (instance.hasNodes && places.nodes == kNoArray) {
    const std::string nodes = mesh + links::kNodes + "/";
    places.nodes = reserveInts(nodes + links::kLabels, instance.nodes.size());
    places.coordinates =
        reserveWhole(nodes + links::kCoordinates, base::NumberFormat::float64, {instance.nodes.size(), 3});
  }
  for (const auto& [type, elements] : instance.elements) {
    if (places.elements.contains(type)) continue;
    const std::string group = mesh + links::kElements + "/" + linkFromName(type) + "/";
    const std::size_t count = elements.labels.size();
    const std::size_t labels = reserveInts(group + links::kLabels, count);
    const h5::Dims dims = {count, count == 0 ? 0 : elements.connectivity.size() / count};
    places.elements[type] = {labels, reserveWhole(group + links::kConnectivity, base::NumberFormat::int32, dims)};
  }
}

void StructureWriter::reserveSets(const SetsKey& key) {
  if (places_.sets.contains(key)) return;
  const auto& [ownerKind, owner, kind] = key;
  const DeclaredSets& sets = model_.sets.at(key);
  const std::string path = ownerPath({ownerKind, owner});
  ModelArrays::Sets& places = places_.sets[key];
  std::size_t packed = 0;
  bool hasPacked = false;
  for (const auto& [name, members] : sets) {
    for (const SetMembers& member : members) packed += isPacked(name, members) ? member.labels.size() : 0;
    hasPacked = hasPacked || isPacked(name, members);
  }
  if (hasPacked) places.packed = reserveInts(inRoot(path, packedSetsLink(kind)) + "/" + links::kLabels, packed);
  for (const auto& [name, members] : sets) {
    if (isPacked(name, members)) continue;
    const std::string set = inRoot(path, setsLink(kind)) + "/" + linkFromName(name);
    for (const SetMembers& member : members) {
      const std::string labels = member.instance.empty() ? set : set + "/" + linkFromName(member.instance);
      places.single[{name, member.instance}] = reserveInts(labels, member.labels.size());
    }
  }
}

void StructureWriter::reserveLocation(std::size_t index) {
  if (places_.locations.size() <= index) places_.locations.resize(index + 1);
  ModelArrays::Location& places = places_.locations[index];
  if (places.hasRoom) return;
  const DeclaredLocation& location = model_.locations[index];
  const std::string group = inRoot(locationPath(index)) + "/";
  const auto rows = static_cast<std::size_t>(location.rows);
  const Position position = location.info.position;
  places.hasRoom = true;
  if (hasNodeLabels(position)) places.nodes = reserveInts(group + links::kNodeLabels, rows);
  if (hasElementLabels(position)) places.elements = reserveInts(group + links::kElementLabels, rows);
  if (hasIntegrationPoints(position)) places.points = reserveInts(group + links::kIntegrationPoints, rows);
  if (location.isIndexed) places.rowOf = reserveInts(group + links::kRowOf, rows);
}

// Each history is an array of its own, be it in a data set that several share.
void StructureWriter::reserveHistories(std::size_t stepIndex) {
  places_.hasHistories.resize(model_.steps.size());
  places_.histories.resize(model_.histories.size(), kNoArray);
  const DeclaredStep& step = model_.steps[stepIndex];
  if (places_.hasHistories[stepIndex] || step.regions.empty()) return;
  places_.hasHistories[stepIndex] = true;
  makeStepGroups();
  std::vector<int> packed;
  std::int64_t numbers = 0;
  bool hasPacked = false;
  for (const auto& [regionName, regionIndex] : step.regions) {
    const DeclaredRegion& region = model_.regions[static_cast<std::size_t>(regionIndex)];
    const bool isRegionPacked = isPacked(model_, region);
    hasPacked = hasPacked || isRegionPacked;
    for (const auto& [name, index] : region.outputs) {
      const DeclaredHistory& history = model_.histories[static_cast<std::size_t>(index)];
      if (isRegionPacked) {
        packed.push_back(index);
        numbers += history.samples * history.width;
      } else {
        places_.histories[static_cast<std::size_t>(index)] =
            reserveWhole(inRoot(pathOf(model_, history)), base::NumberFormat::float32,
                         {static_cast<hsize_t>(history.samples), static_cast<hsize_t>(history.width)});
      }
    }
  }
  if (!hasPacked) return;
  const std::string path = inRoot(pathOf(step), links::kPackedHistory) + "/" + links::kSamples;
  std::int64_t offset = reserve(path, base::NumberFormat::float32, {static_cast<hsize_t>(numbers)});
  for (const int index : packed) {
    const DeclaredHistory& history = model_.histories[static_cast<std::size_t>(index)];
    const std::int64_t count = history.samples * history.width;
    places_.histories[static_cast<std::size_t>(index)] =
        arrays_.addContiguous(base::NumberFormat::float32, 1, count, count == 0 ? 0 : offset);
    offset += count * static_cast<std::int64_t>(sizeof(float));
  }
}

Packing StructureWriter::packing() const {
  if (options_.compress) return options_.checksum ? Packing::gzipFletcher32 : Packing::gzip;
  return options_.checksum ? Packing::fletcher32 : Packing::contiguous;
}

void StructureWriter::reserveBlock(std::size_t index, std::size_t frames) {
  places_.blocks.resize(model_.blocks.size(), kNoArray);
  if (places_.blocks[index] != kNoArray) return;
  const DeclaredBlock& block = model_.blocks[index];
  reserveLocation(static_cast<std::size_t>(block.location));
  makeStepGroups();
  const std::int64_t rows = model_.locations[static_cast<std::size_t>(block.location)].stored();
  const std::string path = inRoot(pathOf(model_, block), links::kData);
  const auto format = block.form.isDouble ? base::NumberFormat::float64 : base::NumberFormat::float32;
  h5::Dims dims = {frames, static_cast<hsize_t>(rows)};
  if (block.form.width != 1) dims.push_back(static_cast<hsize_t>(block.form.width));
  const auto slabs = static_cast<std::int64_t>(frames);
  const std::int64_t numbers = rows * block.form.width;
  if (packing() == Packing::contiguous) {
    places_.blocks[index] = arrays_.addContiguous(format, slabs, numbers, reserve(path, format, dims));
    return;
  }
  groupAt(inRoot(pathOf(model_, block)));
  h5::Storage storage;
  if (options_.compress) storage.filters.push_back(h5::Filter::gzip);
  if (options_.checksum) storage.filters.push_back(h5::Filter::fletcher32);
  places_.blocks[index] =
      arrays_.addPacked(root_.createDataset(path, format, dims, storage), format, packing(), slabs, numbers);
}

void StructureWriter::finish(const std::vector<std::vector<int>>& blockFrames) {
  makeModel();
  makeSets();
  groupAt(links::kLocations);
  for (std::size_t i = 0; i < model_.locations.size(); ++i) makeLocation(i);
  makeStepGroups();
  for (const DeclaredStep& step : model_.steps) makeStep(step, blockFrames);
}

void StructureWriter::makeModel() {
  root_.writeInt(attributes::kLayout, kNewestLayout);
  writeText(root_, attributes::kName, model_.names.name);
  writeText(root_, attributes::kTitle, model_.names.title);
  writeText(root_, attributes::kProducer, model_.names.producer);
  const h5::Group assembly = groupAt(links::kAssembly);
  writeText(assembly, attributes::kName, model_.names.assembly);
  if (model_.symmetryAxis) {
    assembly.createGroup(links::kSector).createFloats(links::kSymmetryAxis, *model_.symmetryAxis, {2, 3});
  }
  groupAt(links::kParts);
  for (const std::string& part : model_.parts) groupAt(inRoot(ownerPath({OwnerKind::part, part})));
  for (const auto& [name, instance] : model_.instances) {
    groupAt(inRoot(ownerPath({OwnerKind::instance, name}))).writeString(attributes::kPart, instance.part);
  }
}

void StructureWriter::makeSets() {
  for (const auto& [key, sets] : model_.sets) {
    makePackedSets(key, sets);
    const auto& [ownerKind, owner, kind] = key;
    if (ownerKind != OwnerKind::assembly) continue;
    // A set that reaches into no instance has no array.
    for (const auto& [name, members] : sets) {
      if (!isPacked(name, members)) groupAt(inRoot(ownerPath({}), setsLink(kind)) + "/" + linkFromName(name));
    }
  }
}

void StructureWriter::makePackedSets(const SetsKey& key, const DeclaredSets& sets) {
  const auto& [ownerKind, owner, kind] = key;
  std::vector<std::string> names;
  std::vector<std::string> instances;
  std::vector<std::int64_t> first = {0};
  for (const auto& [name, members] : sets) {
    if (!isPacked(name, members)) continue;
    for (const SetMembers& member : members) {
      names.push_back(name);
      instances.push_back(member.instance);
      first.push_back(first.back() + countOf(member.labels));
    }
    if (!members.empty()) continue;
    // A set that reaches into no instance.
    names.push_back(name);
    instances.emplace_back();
    first.push_back(first.back());
  }
  if (names.empty()) return;
  const h5::Group group = groupAt(inRoot(ownerPath({ownerKind, owner}), packedSetsLink(kind)));
  group.createStrings(links::kNames, names);
  group.createLongs(links::kFirst, first);
  if (ownerKind == OwnerKind::assembly) group.createStrings(links::kInstances, instances);
}

void StructureWriter::makeLocation(std::size_t index) {
  const DeclaredLocation& location = model_.locations[index];
  const h5::Group group = groupAt(inRoot(locationPath(index)));
  group.writeString(attributes::kInstance, location.info.instance);
  group.writeString(attributes::kPosition, std::string(positionWord(location.info.position)));
  group.writeString(attributes::kElementType, location.info.elementType);
  group.writeInt(attributes::kSectionPoint, location.info.sectionPoint);
  group.writeString(attributes::kSectionPointDescription, location.info.sectionPointDescription);
  if (location.isIndexed) group.writeInt(attributes::kStoredRows, static_cast<int>(location.stored()));
}

void StructureWriter::makeStep(const DeclaredStep& step, const std::vector<std::vector<int>>& blockFrames) {
  const h5::Group group = groupAt(inRoot(pathOf(step)));
  group.writeString(attributes::kDescription, step.info.description);
  group.writeDouble(attributes::kMass, step.info.mass);
  group.writeDoubles(attributes::kMassCenter, step.info.massCenter);
  group.writeDoubles(attributes::kInertiaAboutCenter, step.info.inertiaAboutCenter);
  group.writeDoubles(attributes::kInertiaAboutOrigin, step.info.inertiaAboutOrigin);
  writeFrames(groupAt(inRoot(pathOf(step), links::kFrames)), step);
  groupAt(inRoot(pathOf(step), links::kFields));
  for (const auto& [name, index] : step.fields) {
    makeField(model_.fields[static_cast<std::size_t>(index)], step.frames.size(), blockFrames);
  }
  makeHistories(step);
}

void StructureWriter::makeField(const DeclaredField& field, std::size_t stepFrames,
                                const std::vector<std::vector<int>>& blockFrames) {
  const std::string path = inRoot(pathOf(model_, field));
  const h5::Group group = groupAt(path);
  writeInfo(group, field.info);
  const std::vector<int> frames = model_.framesOf(field, blockFrames);
  if (frames.size() != stepFrames) group.createInts(links::kFrames, frames);
  makeForms(field);
  groupAt(path + "/" + links::kBlocks);
  for (const int index : field.blocks) {
    const DeclaredBlock& block = model_.blocks[static_cast<std::size_t>(index)];
    const h5::Group own = groupAt(inRoot(pathOf(model_, block)));
    own.writeString(attributes::kLocation, std::to_string(block.location));
    if (block.form.type) own.writeInt(attributes::kType, *block.form.type);
    own.writeStrings(attributes::kComponentLabels, block.form.componentLabels);
    const std::vector<int>& ownFrames = blockFrames[static_cast<std::size_t>(index)];
    if (ownFrames != frames) own.createInts(links::kFrames, ownFrames);
  }
}

// Frames that share a form share its group.
void StructureWriter::makeForms(const DeclaredField& field) {
  std::vector<std::pair<const FieldInfo*, std::vector<int>>> forms;
  for (const auto& [frame, info] : field.changes) {
    const auto known =
        std::find_if(forms.begin(), forms.end(), [&info = info](const auto& form) { return *form.first == info; });
    if (known == forms.end()) {
      forms.push_back({&info, {frame}});
    } else {
      known->second.push_back(frame);
    }
  }
  for (std::size_t i = 0; i < forms.size(); ++i) {
    const h5::Group form = groupAt(inRoot(pathOf(model_, field), links::kForms) + "/" + std::to_string(i));
    writeInfo(form, *forms[i].first);
    form.createInts(links::kFrames, forms[i].second);
  }
}

void StructureWriter::makeHistories(const DeclaredStep& step) {
  std::vector<const DeclaredRegion*> packed;
  for (const auto& [name, index] : step.regions) {
    const DeclaredRegion& region = model_.regions[static_cast<std::size_t>(index)];
    if (isPacked(model_, region)) {
      packed.push_back(&region);
    } else {
      makeRegion(region);
    }
  }
  if (!packed.empty()) makePackedHistories(step, packed);
}

void StructureWriter::makeRegion(const DeclaredRegion& region) {
  const std::string step = pathOf(model_.steps[static_cast<std::size_t>(region.step)]);
  const std::string path = inRoot(step, links::kHistory) + "/" + linkFromName(region.name);
  const h5::Group group = groupAt(path);
  group.writeString(attributes::kDescription, region.info.description);
  group.writeInt(attributes::kNode, region.info.node);
  group.writeInt(attributes::kElement, region.info.element);
  group.writeInt(attributes::kIntegrationPoint, region.info.integrationPoint);
  group.writeInt(attributes::kSectionPoint, region.info.sectionPoint);
  group.writeString(attributes::kSectionPointDescription, region.info.sectionPointDescription);
  group.writeString(attributes::kSet, region.info.set);
  groupAt(path + "/" + links::kOutputs);
}

void StructureWriter::makePackedHistories(const DeclaredStep& step, const std::vector<const DeclaredRegion*>& regions) {
  const h5::Group group = groupAt(inRoot(pathOf(step), links::kPackedHistory));
  using Text = std::string;
  const auto texts = [&](const char* link, auto&& of) { group.createStrings(link, columnOf<Text>(regions, of)); };
  const auto ints = [&](const char* link, auto&& of) { group.createInts(link, columnOf<int>(regions, of)); };
  texts(links::kRegions, [](const DeclaredRegion& region) { return region.name; });
  texts(attributes::kDescription, [](const DeclaredRegion& region) { return region.info.description; });
  ints(attributes::kNode, [](const DeclaredRegion& region) { return region.info.node; });
  ints(attributes::kElement, [](const DeclaredRegion& region) { return region.info.element; });
  ints(attributes::kIntegrationPoint, [](const DeclaredRegion& region) { return region.info.integrationPoint; });
  ints(attributes::kSectionPoint, [](const DeclaredRegion& region) { return region.info.sectionPoint; });
  texts(attributes::kSectionPointDescription,
        [](const DeclaredRegion& region) { return region.info.sectionPointDescription; });
  texts(attributes::kSet, [](const DeclaredRegion& region) { return region.info.set; });
  std::vector<std::string> names;
  std::vector<int> owners;
  std::vector<int> widths;
  std::vector<std::int64_t> first = {0};
  for (std::size_t i = 0; i < regions.size(); ++i) {
    for (const auto& [name, index] : regions[i]->outputs) {
      const DeclaredHistory& history = model_.histories[static_cast<std::size_t>(index)];
      names.push_back(name);
      owners.push_back(static_cast<int>(i));
      widths.push_back(static_cast<int>(history.width));
      first.push_back(first.back() + history.samples * history.width);
    }
  }
  group.createStrings(links::kNames, names);
  group.createInts(links::kRegion, owners);
  group.createInts(links::kWidth, widths);
  group.createLongs(links::kFirst, first);
}

std::int64_t structureBytesOf(const DeclaredModel& model) {
  // Groups and data sets, each with its link and attributes; of a model that is still growing those that are known.
  std::int64_t objects = 8 + countOf(model.parts) + 8 * countOf(model.instances) + 5 * countOf(model.sets) +
                         5 * countOf(model.locations) + 20 * countOf(model.steps) + 3 * countOf(model.fields) +
                         3 * countOf(model.blocks);
  for (const auto& [name, instance] : model.instances) objects += 3 * countOf(instance.elements);
  for (const DeclaredField& field : model.fields) objects += 2 * countOf(field.changes);
  return std::clamp(objects * kBytesOfObject, kLeastStructure, kMostStructure);
}

bool isPacked(const std::string& setName, const std::vector<SetMembers>& members) {
  return setName.size() <= kLongestPackedName &&
         std::all_of(members.begin(), members.end(),
                     [](const SetMembers& member) { return member.instance.size() <= kLongestPackedName; });
}

bool isPacked(const DeclaredRegion&, const DeclaredHistory& history) {
  // Samples without numbers leave nothing of their count where only numbers are counted.
  return history.name.size() <= kLongestPackedName && (history.width > 0 || history.samples == 0);
}

bool isPacked(const DeclaredModel& model, const DeclaredRegion& region) {
  const auto isShort = [](const std::string& text) { return text.size() <= kLongestPackedName; };
  return isShort(region.name) && isShort(region.info.description) && isShort(region.info.sectionPointDescription) &&
         isShort(region.info.set) && std::all_of(region.outputs.begin(), region.outputs.end(), [&](const auto& output) {
           return isPacked(region, model.histories[static_cast<std::size_t>(output.second)]);
         });
}

}  // namespace odbstore
