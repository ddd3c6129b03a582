// Owners of sets, behind the handles.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "odbaccess/odb_Instance.h"
#include "odbaccess/set_storage.h"
#include "odbstore/reader.h"

namespace odb_detail {

class EntityStorage {
 public:
  EntityStorage(std::shared_ptr<const odbstore::Reader> reader, odbstore::Owner owner, std::string name)
      : reader_(std::move(reader)), owner_(std::move(owner)), name_(std::move(name)) {}

  const std::string& name() const { return name_; }
  std::string partName() const;
  odb_SetRepository& sets(SetKind kind);
  odb_InstanceRepository& instances();

 private:
  std::shared_ptr<const odbstore::Reader> reader_;
  odbstore::Owner owner_;
  std::string name_;
  std::optional<odb_SetRepository> elementSets_;
  std::optional<odb_SetRepository> nodeSets_;
  std::optional<odb_InstanceRepository> instances_;
};

}  // namespace odb_detail
