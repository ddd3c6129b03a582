#include "odbstore/upgrade.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "base/limited_child.h"
#include "base/output_file.h"
#include "odbstore/checksums.h"
#include "odbstore/names.h"
#include "odbstore/open_database.h"
#include "odbstore/preflight.h"
#include "odbstore/reader_internal.h"
#include "odbstore/writer.h"

namespace odbstore {

namespace {

void copyMesh(const h5::Group& instance, const std::string& name, Writer& writer) {
  const std::optional<h5::Group> mesh = instance.findGroup(links::kMesh);
  if (!mesh) return;
  if (const std::optional<h5::Group> nodes = mesh->findGroup(links::kNodes)) {
    writer.addNodes(name, nodes->dataset(links::kLabels).readInts(), nodes->dataset(links::kCoordinates).readDoubles());
  }
  const std::optional<h5::Group> elements = mesh->findGroup(links::kElements);
  for (const std::string& type : memberNames(elements)) {
    const h5::Group group = elements->group(linkFromName(type));
    writer.addElements(name, type, group.dataset(links::kLabels).readInts(),
                       group.dataset(links::kConnectivity).readInts());
  }
}

void copySets(const h5::Group& root, const Owner& owner, Writer& writer) {
  for (const SetKind kind : {SetKind::element, SetKind::node}) {
    const std::optional<h5::Group> sets = setsGroup(root, owner, kind);
    for (const std::string& name : memberNames(sets)) {
      writer.addSet(owner, kind, name, readSetMembers(*sets, owner, name));
    }
  }
}

void copyModel(const h5::Group& root, Writer& writer) {
  if (root.hasAttribute(attributes::kName)) writer.setName(root.stringAttribute(attributes::kName, ""));
  if (root.hasAttribute(attributes::kTitle)) writer.setTitle(root.stringAttribute(attributes::kTitle, ""));
  if (root.hasAttribute(attributes::kProducer)) writer.setProducer(root.stringAttribute(attributes::kProducer, ""));
  for (const std::string& part : memberNames(root.findGroup(links::kParts))) {
    writer.addPart(part);
    copySets(root, {OwnerKind::part, part}, writer);
  }
  const std::optional<h5::Group> assembly = root.findGroup(links::kAssembly);
  if (!assembly) return;
  if (assembly->hasAttribute(attributes::kName))
    writer.setAssemblyName(assembly->stringAttribute(attributes::kName, ""));
  for (const InstanceInfo& instance : readInstances(root)) {
    writer.addInstance(instance.name, instance.part);
    copyMesh(assembly->group(links::kInstances).group(linkFromName(instance.name)), instance.name, writer);
    copySets(root, {OwnerKind::instance, instance.name}, writer);
  }
  copySets(root, {}, writer);
  if (const auto axis = readSymmetryAxis(root)) writer.setSymmetryAxis(*axis);
}

LocationId copyLocation(const h5::Group& block, Writer& writer) {
  const LocationInfo info = readLocationInfo(block);
  LocationLabels labels;
  if (hasNodeLabels(info.position)) labels.nodes = block.dataset(links::kNodeLabels).readInts();
  if (hasElementLabels(info.position)) labels.elements = block.dataset(links::kElementLabels).readInts();
  if (hasIntegrationPoints(info.position))
    labels.integrationPoints = block.dataset(links::kIntegrationPoints).readInts();
  return writer.addLocation(info, labels);
}

void copyBlock(const h5::Group& block, FieldId field, Writer& writer) {
  BlockOverrides overrides;
  if (block.hasAttribute(attributes::kType)) overrides.type = block.intAttribute(attributes::kType, 0);
  overrides.componentLabels = block.stringsAttribute(attributes::kComponentLabels);
  const h5::Dataset data = block.dataset(links::kData);
  if (data.dims().empty() || data.dims().size() > 2) data.fail("must have the shape [rows, components]");
  const int width = data.dims().size() == 2 ? static_cast<int>(data.dims()[1]) : 1;
  const LocationId location = copyLocation(block, writer);
  if (data.numberSize() > sizeof(float)) {
    writer.addBlock(field, location, std::span<const double>(data.readDoubles()), overrides, width);
  } else {
    writer.addBlock(field, location, std::span<const float>(data.readFloats()), overrides, width);
  }
}

void copyFrame(const h5::Group& group, FrameId frame, Writer& writer) {
  const std::optional<h5::Group> fields = group.findGroup(links::kFields);
  for (const std::string& name : memberNames(fields)) {
    const h5::Group source = fields->group(linkFromName(name));
    const FieldId field = writer.addField(frame, name, readFieldInfo(source));
    const std::optional<h5::Group> blocks = source.findGroup(links::kBlocks);
    const std::size_t count = blocks ? blocks->links().size() : 0;
    for (std::size_t k = 0; k < count; ++k) copyBlock(blocks->group(std::to_string(k)), field, writer);
  }
}

void copyHistories(const h5::Group& step, StepId id, Writer& writer) {
  const std::optional<h5::Group> history = step.findGroup(links::kHistory);
  for (const std::string& name : memberNames(history)) {
    const h5::Group source = history->group(linkFromName(name));
    const HistoryRegionId region = writer.addHistoryRegion(id, name, readHistoryRegionInfo(source));
    const std::optional<h5::Group> outputs = source.findGroup(links::kOutputs);
    for (const std::string& output : memberNames(outputs)) {
      writer.addHistoryOutput(region, output, readHistorySamples(outputs->dataset(linkFromName(output))));
    }
  }
}

void copyStep(const h5::Group& group, const std::string& name, Writer& writer) {
  const StepId id = writer.addStep(name, readStepInfo(group));
  const std::optional<h5::Group> frames = group.findGroup(links::kFrames);
  const std::size_t count = frames ? frames->links().size() : 0;
  for (std::size_t i = 0; i < count; ++i) {
    const h5::Group frame = frames->group(std::to_string(i));
    const FrameInfo info{frame.intAttribute(attributes::kIncrementNumber, 0),
                         frame.doubleAttribute(attributes::kValue, 0.0),
                         frame.stringAttribute(attributes::kDescription, "")};
    copyFrame(frame, writer.addFrame(id, info), writer);
  }
  copyHistories(group, id, writer);
}

void writeUpgraded(const std::string& oldPath, const base::OutputFile& file) {
  int layout = 0;
  const h5::Group root = openDatabase(oldPath, layout);
  if (layout != 1) throw StoreError(oldPath, "", fmt::format("has layout {}, which needs no upgrade", layout));
  Writer writer(file);
  copyModel(root, writer);
  const std::optional<h5::Group> steps = root.findGroup(links::kSteps);
  if (steps) {
    for (const std::string& link : steps->links(h5::LinkOrder::byCreation)) {
      copyStep(steps->group(link), nameFromLink(link), writer);
    }
  }
  writer.finish();
}

}  // namespace

void requireComplete(const base::OutputFile& file) {
  try {
    int layout = 0;
    const h5::Group root = openDatabase(file.temporaryPath(), layout);
    const std::optional<ChecksumPlace> sums = layout == kNewestLayout ? findChecksums(root) : std::nullopt;
    if (!sums) throw StoreError(file.finalPath(), "", "has no checksums");
    const ChecksumReport report = compareChecksums(file.temporaryPath(), *sums);
    if (!report.tableIsDamaged && report.damagedBlocks.empty()) return;
  } catch (const StoreError&) {
    // Whatever is wrong with a file that nobody will see, its user learns the same of it.
  }
  throw StoreError(file.finalPath(), "", "cannot be read back as it was written");
}

void upgrade(const std::string& oldPath, const std::string& newPath) {
  const std::int64_t bytes = checkBeforeOpening(oldPath).bytes;
  // The child writes, and its parent gives the name: what crashes after its work has left nothing under it, and
  // waiting for a slow disk counts as nobody's time.
  base::OutputFile file(newPath);
  base::runLimited(oldPath, base::limitsFor(bytes), [&] {
    writeUpgraded(oldPath, file);
    return std::string();
  });
  // A child that went astray may have left anything.
  requireComplete(file);
  file.publish();
}

bool isForeign(const std::string& path) {
  constexpr std::string_view strictStart = "\x89HDF\r\n\x1a\n\3\x8\x8";  // signature, superblock 3, sizes of 8 bytes
  std::array<char, strictStart.size()> start{};
  // Without waiting: opening a pipe would wait for somebody to write into it.
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  const bool isRegular = file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
  return isRegular && readStart(file.get(), path, start) == start.size() &&
         std::string_view(start.data(), start.size()) != strictStart;
}

int foreignLayout(const std::string& path) {
  const std::int64_t bytes = checkBeforeOpening(path).bytes;
  const std::string layout = base::runLimited(path, base::limitsFor(bytes), [&] {
    int found = 0;
    openDatabase(path, found);
    return std::to_string(found);
  });
  return layout == "1" ? 1 : kNewestLayout;
}

}  // namespace odbstore
