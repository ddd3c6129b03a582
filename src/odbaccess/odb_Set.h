// Sets of nodes or elements, and the objects of the model that own them.
#pragma once

#include <memory>

#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class SetStorage;
class EntityStorage;
}  // namespace odb_detail

// A named set. Its labels are read when a subset is first made with it. A set made without an
// argument has no name and holds nothing.
class odb_Set {
 public:
  odb_Set() = default;
  explicit odb_Set(std::shared_ptr<odb_detail::SetStorage> storage) : storage_(std::move(storage)) {}

  odb_String name() const;

  const std::shared_ptr<odb_detail::SetStorage>& storage() const { return storage_; }

 private:
  std::shared_ptr<odb_detail::SetStorage> storage_;
};

using odb_SetRepository = odb_Repository<odb_String, odb_Set>;

// What can own sets: the root assembly, an instance, a part.
class odb_DiscreteEntity {
 public:
  explicit odb_DiscreteEntity(std::shared_ptr<odb_detail::EntityStorage> storage) : storage_(std::move(storage)) {}

  odb_String name() const;

  // The sets by name; their names are read at the first call. `internal` asks for the sets that a
  // program made for itself as well; our files hold none, so it changes nothing.
  odb_SetRepository& elementSets(bool internal) const;
  odb_SetRepository& nodeSets(bool internal) const;

 protected:
  std::shared_ptr<odb_detail::EntityStorage> storage_;
};

class odb_Part : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;
};

class odb_Instance : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;

  // The name of the part that is placed here.
  odb_String partName() const;
};

using odb_PartRepository = odb_Repository<odb_String, odb_Part>;
using odb_InstanceRepository = odb_Repository<odb_String, odb_Instance>;

class odb_Assembly : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;

  odb_InstanceRepository& instances() const;
};
