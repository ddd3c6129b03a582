#include "odbstore/writer.h"

#include <fmt/format.h>

#include "hdf5/file.h"
#include "odbstore/names.h"
#include "odbstore/writer_impl.h"

namespace odbstore {

Writer::Impl::Impl(std::unique_ptr<base::OutputFile> own, const base::OutputFile& file, WriterOptions options)
    : own_(std::move(own)),
      file_(file),
      options_(options),
      spool_(file_.finalPath()),
      root_(h5::createFile(file_.temporaryPath(), file_.finalPath())) {
  root_->writeInt(attributes::kLayout, kNewestLayout);
  assembly();
  root_->createGroup(links::kParts);
  root_->createGroup(links::kLocations);
  root_->createGroup(links::kSteps, true);
}

h5::Group Writer::Impl::openOrCreate(const h5::Group& parent, const std::string& link, bool trackOrder) {
  return parent.has(link) ? parent.group(link) : parent.createGroup(link, trackOrder);
}

h5::Group Writer::Impl::assembly() { return openOrCreate(root(), links::kAssembly); }

h5::Group Writer::Impl::owner(const Owner& owner) {
  switch (owner.kind) {
    case OwnerKind::part:
      return root().group(links::kParts).group(linkFromName(owner.name));
    case OwnerKind::instance:
      return openOrCreate(assembly(), links::kInstances).group(linkFromName(owner.name));
    default:
      return assembly();
  }
}

Writer::Writer(const std::string& path, WriterOptions options) {
  auto own = std::make_unique<base::OutputFile>(path);
  const base::OutputFile& file = *own;
  impl_ = std::make_unique<Impl>(std::move(own), file, options);
}

Writer::Writer(const base::OutputFile& file, WriterOptions options)
    : impl_(std::make_unique<Impl>(nullptr, file, options)) {}

Writer::~Writer() = default;

void Writer::setName(const std::string& name) { impl_->root().writeString(attributes::kName, name); }

void Writer::setTitle(const std::string& title) { impl_->root().writeString(attributes::kTitle, title); }

void Writer::setProducer(const std::string& producer) { impl_->root().writeString(attributes::kProducer, producer); }

void Writer::setAssemblyName(const std::string& name) { impl_->assembly().writeString(attributes::kName, name); }

void Writer::setSymmetryAxis(const std::array<float, 6>& axis) {
  const h5::Group sector = impl_->assembly().createGroup(links::kSector);
  sector.createDataset(links::kSymmetryAxis, H5T_IEEE_F32LE, {2, 3}).write(axis.data(), H5T_NATIVE_FLOAT);
}

void Writer::addPart(const std::string& name) { impl_->root().group(links::kParts).createGroup(linkFromName(name)); }

void Writer::addInstance(const std::string& name, const std::string& part) {
  const h5::Group instances = Impl::openOrCreate(impl_->assembly(), links::kInstances);
  instances.createGroup(linkFromName(name)).writeString(attributes::kPart, part);
}

void Writer::addNodes(const std::string& instance, std::span<const int> labels, std::span<const double> coordinates) {
  const h5::Group mesh = Impl::openOrCreate(impl_->owner({OwnerKind::instance, instance}), links::kMesh);
  const h5::Group nodes = mesh.createGroup(links::kNodes);
  if (coordinates.size() != 3 * labels.size()) nodes.fail("there must be three coordinates for each node label");
  nodes.createInts(links::kLabels, labels);
  nodes.createDoubles(links::kCoordinates, coordinates, {labels.size(), 3});
}

void Writer::addElements(const std::string& instance, const std::string& type, std::span<const int> labels,
                         std::span<const int> connectivity) {
  const h5::Group mesh = Impl::openOrCreate(impl_->owner({OwnerKind::instance, instance}), links::kMesh);
  const h5::Group elements = Impl::openOrCreate(mesh, links::kElements).createGroup(linkFromName(type));
  const std::size_t nodes = labels.empty() ? 0 : connectivity.size() / labels.size();
  if (nodes * labels.size() != connectivity.size()) elements.fail("every element must have the same number of nodes");
  elements.createInts(links::kLabels, labels);
  elements.createDataset(links::kConnectivity, H5T_STD_I32LE, {labels.size(), nodes})
      .write(connectivity.data(), H5T_NATIVE_INT);
}

void Writer::addSet(const Owner& owner, SetKind kind, const std::string& name, std::span<const SetMembers> members) {
  const h5::Group sets = Impl::openOrCreate(impl_->owner(owner), setsLink(kind));
  if (owner.kind == OwnerKind::assembly) {
    const h5::Group set = sets.createGroup(linkFromName(name));
    for (const SetMembers& group : members) set.createInts(linkFromName(group.instance), group.labels);
    return;
  }
  if (members.size() != 1) sets.fail(fmt::format("the set \"{}\" must have one list of labels", name));
  sets.createInts(linkFromName(name), members.front().labels);
}

LocationId Writer::addLocation(const LocationInfo& info, const LocationLabels& labels) {
  return impl_->addLocation(info, labels);
}

StepId Writer::addStep(const std::string& name, const StepInfo& info) { return impl_->addStep(name, info); }

FrameId Writer::addFrame(StepId step, const FrameInfo& info) { return impl_->addFrame(step, info); }

FieldId Writer::addField(FrameId frame, const std::string& name, const FieldInfo& info) {
  return impl_->addField(frame, name, info);
}

void Writer::addBlock(FieldId field, LocationId location, std::span<const float> rows, const BlockOverrides& overrides,
                      int widthOfEmpty) {
  impl_->addBlock(field, location, rows, overrides, widthOfEmpty);
}

void Writer::addBlock(FieldId field, LocationId location, std::span<const double> rows, const BlockOverrides& overrides,
                      int widthOfEmpty) {
  impl_->addBlock(field, location, rows, overrides, widthOfEmpty);
}

KeptRows Writer::keepRows(std::span<const float> rows, int width) { return impl_->keepRows(rows, width); }

KeptPlaces Writer::keepPlaces(std::span<const int> places) { return impl_->keepPlaces(places); }

void Writer::addBlock(FieldId field, LocationId location, const KeptRows& rows, const KeptPlaces& places) {
  impl_->addBlock(field, location, rows, places);
}

HistoryRegionId Writer::addHistoryRegion(StepId step, const std::string& name, const HistoryRegionInfo& info) {
  const h5::Group all = Impl::openOrCreate(impl_->step(step).group, links::kHistory);
  const h5::Group region = all.createGroup(linkFromName(name));
  region.writeString(attributes::kDescription, info.description);
  region.writeInt(attributes::kNode, info.node);
  region.writeInt(attributes::kElement, info.element);
  region.writeInt(attributes::kIntegrationPoint, info.integrationPoint);
  region.writeInt(attributes::kSectionPoint, info.sectionPoint);
  region.writeString(attributes::kSectionPointDescription, info.sectionPointDescription);
  region.writeString(attributes::kSet, info.set);
  region.createGroup(links::kOutputs);
  return {step, name};
}

void Writer::addHistoryOutput(const HistoryRegionId& region, const std::string& name, const HistorySamples& samples) {
  const h5::Group outputs = impl_->historyRegion(region).group(links::kOutputs);
  if (static_cast<std::int64_t>(samples.numbers.size()) != samples.samples * samples.width) {
    outputs.fail(fmt::format("\"{}\" does not hold {} samples of {} numbers", name, samples.samples, samples.width));
  }
  const h5::Dims dims = {static_cast<hsize_t>(samples.samples), static_cast<hsize_t>(samples.width)};
  outputs.createDataset(linkFromName(name), H5T_IEEE_F32LE, dims).write(samples.numbers.data(), H5T_NATIVE_FLOAT);
}

void Writer::finish() { impl_->finish(); }

}  // namespace odbstore
