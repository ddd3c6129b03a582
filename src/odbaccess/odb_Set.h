// Sets of nodes or elements.
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

  const std::shared_ptr<odb_detail::SetStorage>& storage() const { return storage_; }

 private:
  std::shared_ptr<odb_detail::SetStorage> storage_;
};

using odb_SetRepository = odb_Repository<odb_String, odb_Set>;
