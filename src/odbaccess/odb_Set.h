// Sets of nodes or elements.
//
//     if (const odb_Set* rim = odb.rootAssembly().elementSets(false).ConstFind("RIM")) use(field.getSubset(*rim));
#pragma once

#include <memory>
#include <utility>

#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class SetStorage;
}

// A named set. Its labels are read when a subset is first made with it. A set made without an
// argument has no name and holds nothing.
class odb_Set {
 public:
  odb_Set() = default;
  explicit odb_Set(std::shared_ptr<odb_detail::SetStorage> storage) : storage_(std::move(storage)) {}

  odb_String name() const;

  // For the library itself; null in a set made without an argument.
  const std::shared_ptr<odb_detail::SetStorage>& storage() const { return storage_; }

 private:
  std::shared_ptr<odb_detail::SetStorage> storage_;
};

// By name, bytes ascending.
using odb_SetRepository = odb_Repository<odb_String, odb_Set>;
