#include "report/mesh_sets.h"

#include <algorithm>
#include <numeric>

namespace report {

namespace {

using odbstore::OwnerKind;
using odbstore::SetKind;

void addMembers(MeshSet& set, const inspect::MeshPart& part, const std::vector<int>& labels) {
  const base::LabelIndex& index = set.isOfElements ? part.elements : part.nodes;
  const std::size_t first = set.isOfElements ? part.firstCell : part.firstPoint;
  for (const int label : labels) {
    const int place = index.placeOf(label);
    if (place >= 0) set.members.push_back(static_cast<std::int32_t>(first) + place);
  }
}

// Whether labels of a set that has none of its own are meant in the instance.
bool isMeant(const odbstore::Owner& owner, const odbstore::InstanceInfo& instance) {
  return owner.name == (owner.kind == OwnerKind::part ? instance.part : instance.name);
}

MeshSet makeSet(const odbstore::Reader& reader, const inspect::ModelMesh& mesh, const odbstore::Owner& owner,
                SetKind kind, const std::string& name) {
  MeshSet set = {owner.name.empty() ? name : owner.name + "." + name, kind == SetKind::element, {}};
  for (const odbstore::SetMembers& members : reader.setMembers(owner, kind, name)) {
    for (const odbstore::InstanceInfo& instance : reader.instances()) {
      const bool isHere = members.instance.empty() ? isMeant(owner, instance) : members.instance == instance.name;
      const inspect::MeshPart* part = isHere ? mesh.partOf(instance.name) : nullptr;
      if (part) addMembers(set, *part, members.labels);
    }
  }
  std::sort(set.members.begin(), set.members.end());
  set.members.erase(std::unique(set.members.begin(), set.members.end()), set.members.end());
  return set;
}

void addInstances(const inspect::ModelMesh& mesh, std::vector<MeshSet>& sets) {
  if (mesh.parts.size() < 2) return;
  for (const inspect::MeshPart& part : mesh.parts) {
    MeshSet& set = sets.emplace_back(MeshSet{part.instance, true, std::vector<std::int32_t>(part.cells)});
    std::iota(set.members.begin(), set.members.end(), static_cast<std::int32_t>(part.firstCell));
  }
}

}  // namespace

std::vector<MeshSet> meshSets(const odbstore::Reader& reader, const inspect::ModelMesh& mesh) {
  std::vector<odbstore::Owner> owners = {{OwnerKind::assembly, ""}};
  for (const odbstore::InstanceInfo& instance : reader.instances())
    owners.push_back({OwnerKind::instance, instance.name});
  for (const std::string& part : reader.parts()) owners.push_back({OwnerKind::part, part});
  std::vector<MeshSet> sets;
  addInstances(mesh, sets);
  for (const odbstore::Owner& owner : owners) {
    for (const SetKind kind : {SetKind::element, SetKind::node}) {
      for (const std::string& name : reader.sets(owner, kind)) sets.push_back(makeSet(reader, mesh, owner, kind, name));
    }
  }
  return sets;
}

}  // namespace report
