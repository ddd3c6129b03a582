#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <map>

#include "odbscan/scan_context.h"
#include "odbstore/layout.h"
#include "odbstore/names.h"

namespace odbscan {

namespace {

namespace attributes = odbstore::attributes;
namespace links = odbstore::links;
using odbstore::MemberEntry;
using odbstore::OwnerKind;
using odbstore::SetEntry;
using odbstore::SetKind;

std::optional<std::string> textOf(const h5::Object& object, const char* attribute) {
  if (!object.hasAttribute(attribute)) return std::nullopt;
  return object.stringAttribute(attribute, "");
}

std::optional<std::array<float, 6>> axisOf(const h5::Group& assembly, ScanContext& context) {
  const std::optional<h5::Group> sector = context.once(assembly.findGroup(links::kSector));
  if (!sector) return std::nullopt;
  const h5::Dataset dataset = context.once(sector->dataset(links::kSymmetryAxis));
  if (dataset.dims() != h5::Dims{2, 3}) dataset.fail("the axis must be two points of three coordinates");
  const std::vector<float> numbers = dataset.readFloats();
  std::array<float, 6> axis{};
  std::copy(numbers.begin(), numbers.end(), axis.begin());
  return axis;
}

h5::Dataset meshLabels(const h5::Group& group, ScanContext& context) {
  h5::Dataset labels = context.once(group.dataset(links::kLabels));
  if (labels.dims().size() != 1 || !labels.isInteger()) labels.fail("labels must be integers in one dimension");
  return labels;
}

// The arrays of the nodes' labels and coordinates, none without nodes.
std::pair<std::int32_t, std::int32_t> scanNodes(const h5::Group& mesh, ScanContext& context) {
  const std::optional<h5::Group> nodes = context.once(mesh.findGroup(links::kNodes));
  if (!nodes) return {odbstore::kNone, odbstore::kNone};
  const std::int32_t labels = context.addArray(meshLabels(*nodes, context), false);
  const h5::Dataset coordinates = context.once(nodes->dataset(links::kCoordinates));
  if (!coordinates.isFloat() || coordinates.dims().size() != 2 || coordinates.dims()[1] != 3) {
    coordinates.fail("must be three floating-point numbers for each node label");
  }
  return {labels, context.addArray(coordinates, false)};
}

void scanElements(const h5::Group& mesh, std::size_t instance, ScanContext& context) {
  const std::optional<h5::Group> types = context.once(mesh.findGroup(links::kElements));
  for (const std::string& type : memberNames(types)) {
    context.guarded([&] {
      const h5::Group group = memberOf(context, *types, type);
      const h5::Dataset labels = meshLabels(group, context);
      const h5::Dataset connectivity = context.once(group.dataset(links::kConnectivity));
      if (!connectivity.isInteger() || connectivity.dims().size() != 2 || connectivity.dims()[0] != labels.dims()[0]) {
        connectivity.fail("must be the node labels of each element");
      }
      const std::int32_t labelArray = context.addArray(labels, false);
      context.catalog.addElements(instance, type, labelArray, context.addArray(connectivity, false));
    });
  }
}

class SetScan {
 public:
  SetScan(ScanContext& context, const h5::Group& owner, OwnerKind ownerKind, SetKind kind)
      : context_(context), owner_(owner), isOfAssembly_(ownerKind == OwnerKind::assembly), kind_(kind) {}

  std::vector<SetEntry> run() {
    context_.guarded([&] { scanOneByOne(); });
    if (context_.layout() >= 3) context_.guarded([&] { scanPacked(); });
    return std::move(sets_);
  }

 private:
  MemberEntry wholeOf(const h5::Dataset& labels, std::optional<std::string> instance) {
    return {std::move(instance), context_.addLabels(labels), 0, labels.count()};
  }

  void scanOneByOne() {
    const std::optional<h5::Group> group = context_.once(owner_.findGroup(odbstore::setsLink(kind_)));
    for (const std::string& name : memberNames(group)) {
      context_.guarded([&] { sets_.push_back({name, membersOf(*group, name)}); });
    }
  }

  std::vector<MemberEntry> membersOf(const h5::Group& group, const std::string& name) {
    const std::string link = odbstore::linkFromName(name);
    if (!isOfAssembly_) return {wholeOf(context_.once(group.dataset(link)), std::nullopt)};
    std::vector<MemberEntry> members;
    const h5::Group set = context_.once(group.group(link));
    for (const std::string& instance : memberNames(set)) {
      members.push_back(wholeOf(context_.once(set.dataset(odbstore::linkFromName(instance))), instance));
    }
    return members;
  }

  void scanPacked() {
    const std::optional<h5::Group> group = context_.once(owner_.findGroup(odbstore::packedSetsLink(kind_)));
    if (!group) return;
    const std::vector<std::string> names = context_.once(group->dataset(links::kNames)).readStrings();
    const h5::Dataset firstSet = context_.once(group->dataset(links::kFirst));
    const std::vector<std::int64_t> first = firstSet.readLongs();
    const h5::Dataset labelSet = context_.once(group->dataset(links::kLabels));
    std::vector<std::string> instances(isOfAssembly_ ? 0 : names.size());
    if (isOfAssembly_) instances = context_.once(group->dataset(links::kInstances)).readStrings();
    if (instances.size() != names.size()) group->fail("there must be one instance for each name");
    if (first.size() != names.size() + 1 || first.front() != 0 || first.back() != labelSet.count() ||
        !std::is_sorted(first.begin(), first.end())) {
      firstSet.fail("must go from 0 to the number of labels, with one number more than there are names");
    }
    const std::int32_t labels = context_.addLabels(labelSet);
    std::map<std::string, std::vector<MemberEntry>> sets;
    for (std::size_t i = 0; i < names.size(); ++i) {
      std::vector<MemberEntry>& members = sets[names[i]];
      const bool isEmpty = isOfAssembly_ && instances[i].empty();
      if (isEmpty && first[i] != first[i + 1])
        group->fail(fmt::format("the set \"{}\" has labels in no instance", names[i]));
      if (isEmpty) continue;
      MemberEntry member{std::nullopt, labels, first[i], first[i + 1] - first[i]};
      if (isOfAssembly_) member.instance = instances[i];
      members.push_back(std::move(member));
    }
    for (auto& [name, members] : sets) {
      if (!isOfAssembly_ && members.size() != 1) group->fail(fmt::format("there are two sets \"{}\"", name));
      sets_.push_back({name, std::move(members)});
    }
  }

  ScanContext& context_;
  const h5::Group& owner_;
  bool isOfAssembly_;
  SetKind kind_;
  std::vector<SetEntry> sets_;
};

void scanSets(const h5::Group& owner, OwnerKind ownerKind, std::int32_t place, ScanContext& context) {
  for (const SetKind kind : {SetKind::element, SetKind::node}) {
    context.catalog.addSets(ownerKind, place, kind, SetScan(context, owner, ownerKind, kind).run());
  }
}

// Owners, with their places in the catalog.
using Owners = std::vector<h5::Group>;

Owners scanParts(const h5::Group& root, ScanContext& context) {
  Owners owners;
  const std::optional<h5::Group> parts = context.once(root.findGroup(links::kParts));
  for (const std::string& name : memberNames(parts)) {
    context.guarded([&] {
      owners.push_back(memberOf(context, *parts, name));
      context.catalog.addPart(name);
    });
  }
  return owners;
}

void scanInstance(const h5::Group& group, const std::string& name, std::size_t place, ScanContext& context) {
  const std::string part = group.stringAttribute(attributes::kPart, "");
  std::optional<h5::Group> mesh;
  context.guarded([&] { mesh = context.once(group.findGroup(links::kMesh)); });
  std::pair<std::int32_t, std::int32_t> nodes = {odbstore::kNone, odbstore::kNone};
  if (mesh) context.guarded([&] { nodes = scanNodes(*mesh, context); });
  context.catalog.addInstance(name, part, nodes.first, nodes.second);
  if (mesh) context.guarded([&] { scanElements(*mesh, place, context); });
}

Owners scanInstances(const h5::Group& assembly, ScanContext& context) {
  Owners owners;
  const std::optional<h5::Group> instances = context.once(assembly.findGroup(links::kInstances));
  for (const std::string& name : memberNames(instances)) {
    context.guarded([&] {
      h5::Group group = memberOf(context, *instances, name);
      scanInstance(group, name, owners.size(), context);
      owners.push_back(std::move(group));
    });
  }
  return owners;
}

}  // namespace

void scanModel(const h5::Group& root, ScanContext& context) {
  odbstore::ModelNames names;
  context.guarded([&] {
    names = {textOf(root, attributes::kName), textOf(root, attributes::kTitle), textOf(root, attributes::kProducer),
             std::nullopt};
  });
  Owners parts;
  context.guarded([&] { parts = scanParts(root, context); });
  std::optional<h5::Group> assembly;
  context.guarded([&] { assembly = context.once(root.findGroup(links::kAssembly)); });
  std::optional<std::array<float, 6>> axis;
  Owners instances;
  if (assembly) {
    context.guarded([&] { names.assembly = textOf(*assembly, attributes::kName); });
    context.guarded([&] { axis = axisOf(*assembly, context); });
    context.guarded([&] { instances = scanInstances(*assembly, context); });
    scanSets(*assembly, OwnerKind::assembly, odbstore::kNone, context);
  }
  for (std::size_t i = 0; i < instances.size(); ++i) {
    scanSets(instances[i], OwnerKind::instance, static_cast<std::int32_t>(i), context);
  }
  for (std::size_t i = 0; i < parts.size(); ++i) {
    scanSets(parts[i], OwnerKind::part, static_cast<std::int32_t>(i), context);
  }
  context.catalog.setModel(names, axis);
}

}  // namespace odbscan
