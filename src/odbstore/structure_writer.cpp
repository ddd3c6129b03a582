#include "odbstore/structure_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "odbstore/layout.h"
#include "odbstore/names.h"
#include "odbstore/row_index.h"

namespace odbstore {

namespace {

constexpr std::int64_t kBytesOfObject = 512;
constexpr std::int64_t kLeastStructure = 2048;
constexpr std::int64_t kMostStructure = std::int64_t{1} << 20U;

std::int64_t countOf(const auto& container) { return static_cast<std::int64_t>(container.size()); }

// Paths from the root, as HDF5 takes them.
std::string inRoot(const std::string& path) { return path.substr(1); }
std::string inRoot(const std::string& path, const char* link) { return path.substr(1) + "/" + link; }

class StructureWriter {
 public:
  StructureWriter(const h5::Group& root, const DeclaredModel& model, const WriterOptions& options, ArrayWriter& arrays)
      : root_(root), model_(model), options_(options), arrays_(arrays) {}

  ModelArrays run() {
    makeModel();
    makeSets();
    makeLocations();
    makeSteps();
    reserveMeshes();
    reserveSets();
    reserveLocations();
    reserveHistories();
    reserveBlocks();
    return std::move(places_);
  }

 private:
  void writeText(const h5::Group& group, const char* attribute, const std::optional<std::string>& text) const {
    if (text) group.writeString(attribute, *text);
  }

  void makeModel() {
    root_.writeInt(attributes::kLayout, kNewestLayout);
    writeText(root_, attributes::kName, model_.names.name);
    writeText(root_, attributes::kTitle, model_.names.title);
    writeText(root_, attributes::kProducer, model_.names.producer);
    const h5::Group assembly = root_.createGroup(links::kAssembly);
    writeText(assembly, attributes::kName, model_.names.assembly);
    if (model_.symmetryAxis) {
      assembly.createGroup(links::kSector).createFloats(links::kSymmetryAxis, *model_.symmetryAxis, {2, 3});
    }
    const h5::Group parts = root_.createGroup(links::kParts);
    for (const std::string& part : model_.parts) parts.createGroup(linkFromName(part));
    if (model_.instances.empty()) return;
    const h5::Group instances = assembly.createGroup(links::kInstances);
    for (const auto& [name, instance] : model_.instances) {
      const h5::Group group = instances.createGroup(linkFromName(name));
      group.writeString(attributes::kPart, instance.part);
      if (!instance.hasNodes && instance.elements.empty()) continue;
      const h5::Group mesh = group.createGroup(links::kMesh);
      if (instance.hasNodes) mesh.createGroup(links::kNodes);
      if (instance.elements.empty()) continue;
      const h5::Group types = mesh.createGroup(links::kElements);
      for (const auto& [type, elements] : instance.elements) types.createGroup(linkFromName(type));
    }
  }

  void makeSets() {
    for (const auto& [key, sets] : model_.sets) {
      const auto& [ownerKind, owner, kind] = key;
      const h5::Group group = root_.group(inRoot(ownerPath({ownerKind, owner})));
      makePackedSets(group, ownerKind, kind, sets);
      const bool isSingle =
          std::any_of(sets.begin(), sets.end(), [](const auto& set) { return !isPacked(set.first, set.second); });
      if (!isSingle) continue;
      const h5::Group all = group.createGroup(setsLink(kind));
      for (const auto& [name, members] : sets) {
        if (ownerKind == OwnerKind::assembly && !isPacked(name, members)) all.createGroup(linkFromName(name));
      }
    }
  }

  static void makePackedSets(const h5::Group& owner, OwnerKind ownerKind, SetKind kind, const DeclaredSets& sets) {
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
    const h5::Group group = owner.createGroup(packedSetsLink(kind));
    group.createStrings(links::kNames, names);
    group.createLongs(links::kFirst, first);
    if (ownerKind == OwnerKind::assembly) group.createStrings(links::kInstances, instances);
  }

  void makeLocations() {
    const h5::Group all = root_.createGroup(links::kLocations);
    for (std::size_t i = 0; i < model_.locations.size(); ++i) {
      const DeclaredLocation& location = model_.locations[i];
      const h5::Group group = all.createGroup(std::to_string(i));
      group.writeString(attributes::kInstance, location.info.instance);
      group.writeString(attributes::kPosition, std::string(positionWord(location.info.position)));
      group.writeString(attributes::kElementType, location.info.elementType);
      group.writeInt(attributes::kSectionPoint, location.info.sectionPoint);
      group.writeString(attributes::kSectionPointDescription, location.info.sectionPointDescription);
      if (location.isIndexed) group.writeInt(attributes::kStoredRows, static_cast<int>(location.stored()));
    }
  }

  void makeSteps() {
    const h5::Group all = root_.createGroup(links::kSteps, true);
    for (const DeclaredStep& step : model_.steps) {
      const h5::Group group = all.createGroup(linkFromName(step.name));
      group.writeString(attributes::kDescription, step.info.description);
      group.writeDouble(attributes::kMass, step.info.mass);
      group.writeDoubles(attributes::kMassCenter, step.info.massCenter);
      group.writeDoubles(attributes::kInertiaAboutCenter, step.info.inertiaAboutCenter);
      group.writeDoubles(attributes::kInertiaAboutOrigin, step.info.inertiaAboutOrigin);
      makeFrames(group, step);
      const h5::Group fields = group.createGroup(links::kFields);
      for (const auto& [name, index] : step.fields) {
        makeField(fields.createGroup(linkFromName(name)), model_.fields[static_cast<std::size_t>(index)], step);
      }
      makeHistories(group, step);
    }
  }

  static void makeFrames(const h5::Group& step, const DeclaredStep& declared) {
    std::vector<int> increments;
    std::vector<double> values;
    std::vector<std::string> descriptions;
    for (const FrameInfo& frame : declared.frames) {
      increments.push_back(frame.incrementNumber);
      values.push_back(frame.value);
      descriptions.push_back(frame.description);
    }
    const h5::Group frames = step.createGroup(links::kFrames);
    frames.createInts(links::kIncrementNumber, increments);
    frames.createDoubles(links::kValue, values, {values.size()});
    frames.createStrings(links::kDescription, descriptions);
  }

  static void writeInfo(const h5::Group& group, const FieldInfo& info) {
    group.writeString(attributes::kDescription, info.description);
    group.writeInt(attributes::kType, info.type);
    group.writeStrings(attributes::kComponentLabels, info.componentLabels);
    group.writeInts(attributes::kValidInvariants, info.validInvariants);
    group.writeInt(attributes::kEngineeringShear, info.engineeringShear ? 1 : 0);
  }

  void makeField(const h5::Group& group, const DeclaredField& field, const DeclaredStep& step) {
    writeInfo(group, field.info);
    const std::vector<int> frames = model_.framesOf(field);
    if (frames.size() != step.frames.size()) group.createInts(links::kFrames, frames);
    makeForms(group, field);
    const h5::Group blocks = group.createGroup(links::kBlocks);
    for (const int index : field.blocks) {
      const DeclaredBlock& block = model_.blocks[static_cast<std::size_t>(index)];
      const h5::Group own = blocks.createGroup(std::to_string(block.number));
      own.writeString(attributes::kLocation, std::to_string(block.location));
      if (block.form.type) own.writeInt(attributes::kType, *block.form.type);
      own.writeStrings(attributes::kComponentLabels, block.form.componentLabels);
      const std::vector<int> ownFrames = model_.framesOf(block);
      if (ownFrames != frames) own.createInts(links::kFrames, ownFrames);
    }
  }

  // Frames that share a form share its group.
  static void makeForms(const h5::Group& group, const DeclaredField& field) {
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
    if (forms.empty()) return;
    const h5::Group all = group.createGroup(links::kForms);
    for (std::size_t i = 0; i < forms.size(); ++i) {
      const h5::Group form = all.createGroup(std::to_string(i));
      writeInfo(form, *forms[i].first);
      form.createInts(links::kFrames, forms[i].second);
    }
  }

  void makeHistories(const h5::Group& step, const DeclaredStep& declared) {
    std::vector<const DeclaredRegion*> packed;
    std::optional<h5::Group> single;
    for (const auto& [name, index] : declared.regions) {
      const DeclaredRegion& region = model_.regions[static_cast<std::size_t>(index)];
      if (isPacked(model_, region)) {
        packed.push_back(&region);
        continue;
      }
      if (!single) single = step.createGroup(links::kHistory);
      makeRegion(*single, region);
    }
    if (!packed.empty()) makePackedHistories(step.createGroup(links::kPackedHistory), packed);
  }

  static void makeRegion(const h5::Group& history, const DeclaredRegion& region) {
    const h5::Group group = history.createGroup(linkFromName(region.name));
    group.writeString(attributes::kDescription, region.info.description);
    group.writeInt(attributes::kNode, region.info.node);
    group.writeInt(attributes::kElement, region.info.element);
    group.writeInt(attributes::kIntegrationPoint, region.info.integrationPoint);
    group.writeInt(attributes::kSectionPoint, region.info.sectionPoint);
    group.writeString(attributes::kSectionPointDescription, region.info.sectionPointDescription);
    group.writeString(attributes::kSet, region.info.set);
    group.createGroup(links::kOutputs);
  }

  template <class Value, class Of>
  static std::vector<Value> columnOf(const std::vector<const DeclaredRegion*>& regions, Of&& of) {
    std::vector<Value> column;
    for (const DeclaredRegion* region : regions) column.push_back(of(*region));
    return column;
  }

  void makePackedHistories(const h5::Group& group, const std::vector<const DeclaredRegion*>& regions) {
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

  // Room for an array; the data set's name is its path from the root. Returns the byte at which it starts.
  std::int64_t reserve(const std::string& path, base::NumberFormat format, const h5::Dims& dims) {
    h5::Storage storage;
    storage.reserved = true;
    const h5::Dataset dataset = root_.createDataset(path, format, dims, storage);
    const std::optional<std::int64_t> offset = dataset.offset();
    if (dataset.count() > 0 && !offset) dataset.fail("has no room in the file");
    return offset.value_or(0);
  }

  // The same of an array that is one slab.
  std::size_t reserveWhole(const std::string& path, base::NumberFormat format, const h5::Dims& dims) {
    std::int64_t numbers = 1;
    for (const hsize_t d : dims) numbers *= static_cast<std::int64_t>(d);
    return arrays_.addContiguous(format, 1, numbers, reserve(path, format, dims));
  }
  std::size_t reserveInts(const std::string& path, std::size_t count) {
    return reserveWhole(path, base::NumberFormat::int32, {count});
  }

  void reserveMeshes() {
    for (const auto& [name, instance] : model_.instances) {
      const std::string mesh = inRoot(ownerPath({OwnerKind::instance, name}), links::kMesh) + "/";
      ModelArrays::Mesh& places = places_.meshes[name];
      if (instance.hasNodes) {
        const std::string nodes = mesh + links::kNodes + "/";
        places.nodes = reserveInts(nodes + links::kLabels, instance.nodes.size());
        places.coordinates =
            reserveWhole(nodes + links::kCoordinates, base::NumberFormat::float64, {instance.nodes.size(), 3});
      }
      for (const auto& [type, elements] : instance.elements) {
        const std::string group = mesh + links::kElements + "/" + linkFromName(type) + "/";
        const std::size_t count = elements.labels.size();
        const std::size_t labels = reserveInts(group + links::kLabels, count);
        const h5::Dims dims = {count, count == 0 ? 0 : elements.connectivity.size() / count};
        places.elements[type] = {labels, reserveWhole(group + links::kConnectivity, base::NumberFormat::int32, dims)};
      }
    }
  }

  void reserveSets() {
    for (const auto& [key, sets] : model_.sets) {
      const auto& [ownerKind, owner, kind] = key;
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
  }

  void reserveLocations() {
    for (std::size_t i = 0; i < model_.locations.size(); ++i) {
      const DeclaredLocation& location = model_.locations[i];
      const std::string group = inRoot(locationPath(i)) + "/";
      const auto rows = static_cast<std::size_t>(location.rows);
      const Position position = location.info.position;
      ModelArrays::Location places;
      if (hasNodeLabels(position)) places.nodes = reserveInts(group + links::kNodeLabels, rows);
      if (hasElementLabels(position)) places.elements = reserveInts(group + links::kElementLabels, rows);
      if (hasIntegrationPoints(position)) places.points = reserveInts(group + links::kIntegrationPoints, rows);
      if (location.isIndexed) places.rowOf = reserveInts(group + links::kRowOf, rows);
      places_.locations.push_back(places);
    }
  }

  // Each history is an array of its own, be it in a data set that several share.
  void reserveHistories() {
    places_.histories.resize(model_.histories.size());
    for (const DeclaredStep& step : model_.steps) {
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
      if (!hasPacked) continue;
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
  }

  Packing packing() const {
    if (options_.compress) return options_.checksum ? Packing::gzipFletcher32 : Packing::gzip;
    return options_.checksum ? Packing::fletcher32 : Packing::contiguous;
  }

  void reserveBlocks() {
    for (const DeclaredBlock& block : model_.blocks) {
      const std::int64_t rows = model_.locations[static_cast<std::size_t>(block.location)].stored();
      const auto frames = static_cast<std::int64_t>(model_.framesOf(block).size());
      const std::string path = inRoot(pathOf(model_, block), links::kData);
      const auto format = block.form.isDouble ? base::NumberFormat::float64 : base::NumberFormat::float32;
      h5::Dims dims = {static_cast<hsize_t>(frames), static_cast<hsize_t>(rows)};
      if (block.form.width != 1) dims.push_back(static_cast<hsize_t>(block.form.width));
      const std::int64_t numbers = rows * block.form.width;
      if (packing() == Packing::contiguous) {
        places_.blocks.push_back(arrays_.addContiguous(format, frames, numbers, reserve(path, format, dims)));
        continue;
      }
      h5::Storage storage;
      if (options_.compress) storage.filters.push_back(h5::Filter::gzip);
      if (options_.checksum) storage.filters.push_back(h5::Filter::fletcher32);
      places_.blocks.push_back(
          arrays_.addPacked(root_.createDataset(path, format, dims, storage), format, packing(), frames, numbers));
    }
  }

  const h5::Group& root_;
  const DeclaredModel& model_;
  const WriterOptions& options_;
  ArrayWriter& arrays_;
  ModelArrays places_;
};

}  // namespace

std::int64_t structureBytesOf(const DeclaredModel& model) {
  // Groups and data sets, each with its link and attributes.
  std::int64_t objects = 8 + countOf(model.parts) + 8 * countOf(model.instances) + 5 * countOf(model.sets) +
                         5 * countOf(model.locations) + 20 * countOf(model.steps) + 3 * countOf(model.fields) +
                         3 * countOf(model.blocks);
  for (const auto& [name, instance] : model.instances) objects += 3 * countOf(instance.elements);
  for (const DeclaredField& field : model.fields) objects += 2 * countOf(field.changes);
  return std::clamp(objects * kBytesOfObject, kLeastStructure, kMostStructure);
}

ModelArrays writeStructure(const h5::Group& root, const DeclaredModel& model, const WriterOptions& options,
                           ArrayWriter& arrays) {
  return StructureWriter(root, model, options, arrays).run();
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
