#include "odbstore/reader.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/output_file.h"
#include "odbstore/names.h"
#include "odbstore/open_database.h"
#include "odbstore/reader_internal.h"
#include "odbstore/upgrade.h"

namespace odbstore {

namespace {

// The file and its layout; no file access for an older one.
std::pair<std::shared_ptr<FileAccess>, int> openAccess(const std::string& path) {
  if (isForeign(path)) return {nullptr, foreignLayout(path)};
  int layout = 0;
  h5::Group root = openDatabase(path, layout);
  if (layout != kNewestLayout) return {nullptr, layout};
  return {std::make_shared<FileAccess>(path, std::move(root)), layout};
}

[[noreturn]] void refuseLayout(const std::string& path, int layout) {
  throw StoreError(path, "",
                   fmt::format("has layout {} and must be upgraded to layout {} first", layout, kNewestLayout));
}

std::shared_ptr<FileAccess> openNewest(const std::string& path) {
  auto [file, layout] = openAccess(path);
  if (!file) refuseLayout(path, layout);
  return file;
}

}  // namespace

std::vector<std::string> memberNames(const std::optional<h5::Group>& group) {
  if (!group) return {};
  std::vector<std::string> names = group->links();
  for (std::string& name : names) name = nameFromLink(name);
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<h5::Group> setsGroup(const h5::Group& root, const Owner& owner, SetKind kind) {
  std::optional<h5::Group> group = root.findGroup(owner.kind == OwnerKind::part ? links::kParts : links::kAssembly);
  if (group && owner.kind == OwnerKind::instance) group = group->findGroup(links::kInstances);
  if (group && owner.kind != OwnerKind::assembly) group = group->findGroup(linkFromName(owner.name));
  if (!group) return std::nullopt;
  return group->findGroup(setsLink(kind));
}

const std::optional<h5::Group>& FileAccess::sets(const Owner& owner, SetKind kind) {
  const auto key = std::make_tuple(owner.kind, owner.name, kind);
  const auto found = sets_.find(key);
  return found != sets_.end() ? found->second : sets_.emplace(key, setsGroup(root_, owner, kind)).first->second;
}

namespace {

std::vector<int> readLabels(const h5::Dataset& dataset) {
  if (dataset.dims().size() != 1) dataset.fail("labels must have one dimension");
  return dataset.readInts();
}

}  // namespace

std::vector<SetMembers> readSetMembers(const h5::Group& sets, const Owner& owner, const std::string& set) {
  const std::string link = linkFromName(set);
  if (owner.kind != OwnerKind::assembly) return {{"", readLabels(sets.dataset(link))}};
  const h5::Group group = sets.group(link);
  std::vector<SetMembers> members;
  for (const std::string& instance : group.links()) {
    members.push_back({nameFromLink(instance), readLabels(group.dataset(instance))});
  }
  return members;
}

std::vector<InstanceInfo> readInstances(const h5::Group& root) {
  std::vector<InstanceInfo> instances;
  const std::optional<h5::Group> assembly = root.findGroup(links::kAssembly);
  const std::optional<h5::Group> group = assembly ? assembly->findGroup(links::kInstances) : std::nullopt;
  for (const std::string& name : memberNames(group)) {
    instances.push_back({name, group->group(linkFromName(name)).stringAttribute(attributes::kPart, "")});
  }
  return instances;
}

std::optional<std::array<float, 6>> readSymmetryAxis(const h5::Group& root) {
  const std::optional<h5::Group> assembly = root.findGroup(links::kAssembly);
  const std::optional<h5::Group> sector = assembly ? assembly->findGroup(links::kSector) : std::nullopt;
  if (!sector) return std::nullopt;
  const h5::Dataset dataset = sector->dataset(links::kSymmetryAxis);
  if (dataset.dims() != h5::Dims{2, 3}) dataset.fail("the axis must be two points of three coordinates");
  const std::vector<float> numbers = dataset.readFloats();
  std::array<float, 6> axis{};
  std::copy(numbers.begin(), numbers.end(), axis.begin());
  return axis;
}

Reader::Reader(const std::string& path) : file_(openNewest(path)) {}

Reader::Reader(std::shared_ptr<FileAccess> file) : file_(std::move(file)) {}

std::shared_ptr<const Reader> Reader::openIfNewest(const std::string& path) {
  std::shared_ptr<FileAccess> file = openAccess(path).first;
  return file ? std::shared_ptr<const Reader>(new Reader(std::move(file))) : nullptr;
}

std::shared_ptr<const Reader> Reader::openUnpublished(const base::OutputFile& file) {
  int layout = 0;
  h5::Group root = openDatabase(file.temporaryPath(), file.finalPath(), layout);
  if (layout != kNewestLayout) refuseLayout(file.finalPath(), layout);
  return std::shared_ptr<const Reader>(new Reader(std::make_shared<FileAccess>(file.finalPath(), std::move(root))));
}

Reader::~Reader() = default;

std::string Reader::name() const { return file_->root().stringAttribute(attributes::kName, file_->path()); }

std::string Reader::title() const { return file_->root().stringAttribute(attributes::kTitle, ""); }

std::string Reader::producer() const { return file_->root().stringAttribute(attributes::kProducer, ""); }

std::string Reader::assemblyName() const {
  const std::optional<h5::Group> assembly = file_->root().findGroup(links::kAssembly);
  return assembly ? assembly->stringAttribute(attributes::kName, "") : "";
}

std::vector<std::string> Reader::parts() const { return memberNames(file_->root().findGroup(links::kParts)); }

const std::vector<InstanceInfo>& Reader::instances() const {
  if (!instances_) instances_ = readInstances(file_->root());
  return *instances_;
}

std::vector<std::string> Reader::sets(const Owner& owner, SetKind kind) const {
  return memberNames(file_->sets(owner, kind));
}

std::vector<SetMembers> Reader::setMembers(const Owner& owner, SetKind kind, const std::string& set) const {
  const std::optional<h5::Group>& group = file_->sets(owner, kind);
  if (!group) file_->root().fail(fmt::format("there is no set \"{}\"", set));
  return readSetMembers(*group, owner, set);
}

std::optional<std::array<float, 6>> Reader::symmetryAxis() const { return readSymmetryAxis(file_->root()); }

std::vector<std::string> Reader::steps() const {
  const std::optional<h5::Group> group = file_->root().findGroup(links::kSteps);
  if (!group) return {};
  std::vector<std::string> names = group->links(h5::LinkOrder::byCreation);
  for (std::string& name : names) name = nameFromLink(name);
  return names;
}

std::shared_ptr<const StoredStep> Reader::step(const std::string& name) const { return openStep(file_, name); }

}  // namespace odbstore
