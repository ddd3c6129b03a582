#include "odbaccess/entity_storage.h"

#include <map>

#include "odbaccess/guard.h"

namespace odb_detail {

using odbstore::Owner;
using odbstore::OwnerKind;

std::string EntityStorage::partName() const {
  return guarded([&] {
    for (const odbstore::InstanceInfo& instance : reader_->instances()) {
      if (instance.name == owner_.name) return instance.part;
    }
    return std::string();
  });
}

odb_SetRepository& EntityStorage::sets(SetKind kind) {
  std::optional<odb_SetRepository>& sets = kind == SetKind::element ? elementSets_ : nodeSets_;
  if (!sets) {
    std::map<odb_String, odb_Set> nodes;
    for (const std::string& stored : guarded([&] { return reader_->sets(owner_, kind); })) {
      const odb_String name(stored);
      nodes.emplace_hint(nodes.end(), name, odb_Set(std::make_shared<SetStorage>(reader_, owner_, kind, name)));
    }
    sets = odb_SetRepository(std::move(nodes));
  }
  return *sets;
}

odb_InstanceRepository& EntityStorage::instances() {
  if (!instances_) {
    std::map<odb_String, odb_Instance> nodes;
    for (const odbstore::InstanceInfo& instance : guarded([&] { return reader_->instances(); })) {
      nodes.emplace(odb_String(instance.name), odb_Instance(std::make_shared<EntityStorage>(
                                                   reader_, Owner{OwnerKind::instance, instance.name}, instance.name)));
    }
    instances_ = odb_InstanceRepository(std::move(nodes));
  }
  return *instances_;
}

}  // namespace odb_detail
