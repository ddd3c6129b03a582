#include "odbstore/layout_1.h"

#include <fmt/format.h>

#include <span>

#include "odbstore/names.h"
#include "odbstore/open_database.h"
#include "odbstore/reader_internal.h"
#include "odbstore/writer.h"

namespace odbstore {

namespace {

// Takes what a Writer takes, and keeps nothing.
struct Nowhere {
  void setName(const auto&...) {}
  void setTitle(const auto&...) {}
  void setProducer(const auto&...) {}
  void setAssemblyName(const auto&...) {}
  void setSymmetryAxis(const auto&...) {}
  void addPart(const auto&...) {}
  void addInstance(const auto&...) {}
  void addNodes(const auto&...) {}
  void addElements(const auto&...) {}
  void addSet(const auto&...) {}
  void addBlock(const auto&...) {}
  void addHistoryOutput(const auto&...) {}
  LocationId addLocation(const auto&...) { return {}; }
  StepId addStep(const auto&...) { return {}; }
  FrameId addFrame(const auto&...) { return {}; }
  FieldId addField(const auto&...) { return {}; }
  HistoryRegionId addHistoryRegion(const auto&...) { return {}; }
};

template <class Target>
void copyMesh(const h5::Group& instance, const std::string& name, Target& target) {
  const std::optional<h5::Group> mesh = instance.findGroup(links::kMesh);
  if (!mesh) return;
  if (const std::optional<h5::Group> nodes = mesh->findGroup(links::kNodes)) {
    target.addNodes(name, nodes->dataset(links::kLabels).readInts(), nodes->dataset(links::kCoordinates).readDoubles());
  }
  const std::optional<h5::Group> elements = mesh->findGroup(links::kElements);
  for (const std::string& type : memberNames(elements)) {
    const h5::Group group = elements->group(linkFromName(type));
    target.addElements(name, type, group.dataset(links::kLabels).readInts(),
                       group.dataset(links::kConnectivity).readInts());
  }
}

template <class Target>
void copySets(const h5::Group& root, const Owner& owner, Target& target) {
  for (const SetKind kind : {SetKind::element, SetKind::node}) {
    const std::optional<h5::Group> sets = setsGroup(root, owner, kind);
    for (const std::string& name : memberNames(sets)) {
      target.addSet(owner, kind, name, readSetMembers(*sets, owner, name));
    }
  }
}

template <class Target>
void copyModel(const h5::Group& root, Target& target) {
  if (root.hasAttribute(attributes::kName)) target.setName(root.stringAttribute(attributes::kName, ""));
  if (root.hasAttribute(attributes::kTitle)) target.setTitle(root.stringAttribute(attributes::kTitle, ""));
  if (root.hasAttribute(attributes::kProducer)) target.setProducer(root.stringAttribute(attributes::kProducer, ""));
  for (const std::string& part : memberNames(root.findGroup(links::kParts))) {
    target.addPart(part);
    copySets(root, {OwnerKind::part, part}, target);
  }
  const std::optional<h5::Group> assembly = root.findGroup(links::kAssembly);
  if (!assembly) return;
  if (assembly->hasAttribute(attributes::kName))
    target.setAssemblyName(assembly->stringAttribute(attributes::kName, ""));
  for (const InstanceInfo& instance : readInstances(root)) {
    target.addInstance(instance.name, instance.part);
    copyMesh(assembly->group(links::kInstances).group(linkFromName(instance.name)), instance.name, target);
    copySets(root, {OwnerKind::instance, instance.name}, target);
  }
  copySets(root, {}, target);
  if (const auto axis = readSymmetryAxis(root)) target.setSymmetryAxis(*axis);
}

template <class Target>
LocationId copyLocation(const h5::Group& block, Target& target) {
  const LocationInfo info = readLocationInfo(block);
  LocationLabels labels;
  if (hasNodeLabels(info.position)) labels.nodes = block.dataset(links::kNodeLabels).readInts();
  if (hasElementLabels(info.position)) labels.elements = block.dataset(links::kElementLabels).readInts();
  if (hasIntegrationPoints(info.position))
    labels.integrationPoints = block.dataset(links::kIntegrationPoints).readInts();
  return target.addLocation(info, labels);
}

template <class Target>
void copyBlock(const h5::Group& block, FieldId field, Target& target) {
  BlockOverrides overrides;
  if (block.hasAttribute(attributes::kType)) overrides.type = block.intAttribute(attributes::kType, 0);
  overrides.componentLabels = block.stringsAttribute(attributes::kComponentLabels);
  const h5::Dataset data = block.dataset(links::kData);
  if (data.dims().empty() || data.dims().size() > 2) data.fail("must have the shape [rows, components]");
  const int width = data.dims().size() == 2 ? static_cast<int>(data.dims()[1]) : 1;
  const LocationId location = copyLocation(block, target);
  if (data.numberSize() > sizeof(float)) {
    target.addBlock(field, location, std::span<const double>(data.readDoubles()), overrides, width);
  } else {
    target.addBlock(field, location, std::span<const float>(data.readFloats()), overrides, width);
  }
}

template <class Target>
void copyFrame(const h5::Group& group, FrameId frame, Target& target) {
  const std::optional<h5::Group> fields = group.findGroup(links::kFields);
  for (const std::string& name : memberNames(fields)) {
    const h5::Group source = fields->group(linkFromName(name));
    const FieldId field = target.addField(frame, name, readFieldInfo(source));
    const std::optional<h5::Group> blocks = source.findGroup(links::kBlocks);
    const std::size_t count = blocks ? blocks->links().size() : 0;
    for (std::size_t k = 0; k < count; ++k) copyBlock(blocks->group(std::to_string(k)), field, target);
  }
}

template <class Target>
void copyHistories(const h5::Group& step, StepId id, Target& target) {
  const std::optional<h5::Group> history = step.findGroup(links::kHistory);
  for (const std::string& name : memberNames(history)) {
    const h5::Group source = history->group(linkFromName(name));
    const HistoryRegionId region = target.addHistoryRegion(id, name, readHistoryRegionInfo(source));
    const std::optional<h5::Group> outputs = source.findGroup(links::kOutputs);
    for (const std::string& output : memberNames(outputs)) {
      target.addHistoryOutput(region, output, readHistorySamples(outputs->dataset(linkFromName(output))));
    }
  }
}

template <class Target>
void copyStep(const h5::Group& group, const std::string& name, Target& target) {
  const StepId id = target.addStep(name, readStepInfo(group));
  const std::optional<h5::Group> frames = group.findGroup(links::kFrames);
  const std::size_t count = frames ? frames->links().size() : 0;
  for (std::size_t i = 0; i < count; ++i) {
    const h5::Group frame = frames->group(std::to_string(i));
    const FrameInfo info{frame.intAttribute(attributes::kIncrementNumber, 0),
                         frame.doubleAttribute(attributes::kValue, 0.0),
                         frame.stringAttribute(attributes::kDescription, "")};
    copyFrame(frame, target.addFrame(id, info), target);
  }
  copyHistories(group, id, target);
}

template <class Target>
void copyAll(const std::string& path, Target& target) {
  int layout = 0;
  const h5::Group root = openDatabase(path, layout);
  if (layout != 1) throw StoreError(path, "", fmt::format("has layout {}, which needs no upgrade", layout));
  copyModel(root, target);
  const std::optional<h5::Group> steps = root.findGroup(links::kSteps);
  if (!steps) return;
  for (const std::string& link : steps->links(h5::LinkOrder::byCreation)) {
    copyStep(steps->group(link), nameFromLink(link), target);
  }
}

}  // namespace

void copyLayout1(const std::string& path, Writer& writer) { copyAll(path, writer); }

void readLayout1(const std::string& path) {
  Nowhere nowhere;
  copyAll(path, nowhere);
}

}  // namespace odbstore
