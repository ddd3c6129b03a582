#include "export/set_arrays.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>

#include "odbstore/database_file.h"

namespace vtk_export {

namespace {

using odbstore::Owner;
using odbstore::OwnerKind;
using odbstore::SetKind;

std::vector<Owner> ownersIn(const odbstore::Reader& reader) {
  std::vector<Owner> owners = {{OwnerKind::assembly, ""}};
  for (const odbstore::InstanceInfo& instance : reader.instances())
    owners.push_back({OwnerKind::instance, instance.name});
  for (const std::string& part : reader.parts()) owners.push_back({OwnerKind::part, part});
  return owners;
}

// The instances in which members of a set of the owner lie.
std::vector<std::string> instancesOf(const odbstore::Reader& reader, const Owner& owner,
                                     const odbstore::SetMembers& members) {
  if (owner.kind == OwnerKind::assembly) return {members.instance};
  if (owner.kind == OwnerKind::instance) return {owner.name};
  std::vector<std::string> names;
  for (const odbstore::InstanceInfo& instance : reader.instances()) {
    if (instance.part == owner.name) names.push_back(instance.name);
  }
  return names;
}

SetArray arrayOf(const odbstore::Reader& reader, const inspect::ModelMesh& mesh, const Owner& owner, SetKind kind,
                 const std::string& set) {
  const bool isOfCells = kind == SetKind::element;
  SetArray array = {"set " + (owner.name.empty() ? set : owner.name + "." + set),
                    isOfCells ? Association::cells : Association::points,
                    std::vector<std::uint8_t>(isOfCells ? mesh.elementLabels.size() : mesh.nodeLabels.size())};
  for (const odbstore::SetMembers& members : reader.setMembers(owner, kind, set)) {
    for (const std::string& instance : instancesOf(reader, owner, members)) {
      for (const int label : members.labels) {
        const std::int64_t place = isOfCells ? mesh.cellOf(instance, label) : mesh.pointOf(instance, label);
        if (place >= 0) array.isMember[static_cast<std::size_t>(place)] = 1;
      }
    }
  }
  return array;
}

}  // namespace

std::vector<SetArray> setArrays(const odbstore::Reader& reader, const inspect::ModelMesh& mesh,
                                const std::vector<std::string>& patterns) {
  std::vector<SetArray> arrays;
  std::vector<bool> fitsOne(patterns.size());
  const auto isChosen = [&](const std::string& set) {
    bool isAny = patterns.empty();
    for (std::size_t i = 0; i < patterns.size(); ++i) {
      if (patterns[i] != set && ::fnmatch(patterns[i].c_str(), set.c_str(), 0) != 0) continue;
      isAny = fitsOne[i] = true;
    }
    return isAny;
  };
  for (const Owner& owner : ownersIn(reader)) {
    for (const SetKind kind : {SetKind::element, SetKind::node}) {
      for (const std::string& set : reader.sets(owner, kind)) {
        if (isChosen(set)) arrays.push_back(arrayOf(reader, mesh, owner, kind, set));
      }
    }
  }
  const auto unused = std::find(fitsOne.begin(), fitsOne.end(), false);
  if (unused == fitsOne.end()) return arrays;
  const std::string& pattern = patterns[static_cast<std::size_t>(unused - fitsOne.begin())];
  throw odbstore::StoreError(reader.file()->name(), "", fmt::format("there is no set {}", pattern));
}

}  // namespace vtk_export
