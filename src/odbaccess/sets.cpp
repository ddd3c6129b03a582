#include <algorithm>

#include "odbaccess/guard.h"
#include "odbaccess/odb_Set.h"
#include "odbaccess/set_storage.h"

namespace odb_detail {

using odbstore::Owner;
using odbstore::OwnerKind;

void SetStorage::load() {
  labels_.emplace();
  if (!reader_) return;
  const auto add = [&](const std::string& instance, std::vector<int> labels) {
    if (!std::is_sorted(labels.begin(), labels.end())) std::sort(labels.begin(), labels.end());
    labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
    (*labels_)[instance] = std::move(labels);
  };
  for (odbstore::SetMembers& group : reader_->setMembers(owner_, kind_, name_)) {
    switch (owner_.kind) {
      case OwnerKind::assembly:
        add(group.instance, std::move(group.labels));
        break;
      case OwnerKind::instance:
        add(owner_.name, std::move(group.labels));
        break;
      case OwnerKind::part:
        for (const odbstore::InstanceInfo& instance : reader_->instances()) {
          if (instance.part == owner_.name) add(instance.name, group.labels);
        }
        break;
    }
  }
}

const std::vector<int>& SetStorage::labelsIn(const std::string& instance) {
  static const std::vector<int> none;
  if (!labels_) guarded([&] { load(); });
  const auto found = labels_->find(instance);
  return found == labels_->end() ? none : found->second;
}

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
    for (const std::string& name : guarded([&] { return reader_->sets(owner_, kind); })) {
      nodes.emplace(odb_String(name), odb_Set(std::make_shared<SetStorage>(reader_, owner_, kind, name)));
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

odb_String odb_Set::name() const { return storage_ ? odb_String(storage_->name()) : odb_String(); }

odb_String odb_DiscreteEntity::name() const { return odb_String(storage_->name()); }

odb_SetRepository& odb_DiscreteEntity::elementSets(bool) const { return storage_->sets(odbstore::SetKind::element); }

odb_SetRepository& odb_DiscreteEntity::nodeSets(bool) const { return storage_->sets(odbstore::SetKind::node); }

odb_String odb_Instance::partName() const { return odb_String(storage_->partName()); }

odb_InstanceRepository& odb_Assembly::instances() const { return storage_->instances(); }
