// What can own sets.
//
//     odb_SetRepository& sets = odb.rootAssembly().elementSets(false);
//     odb_RepositoryIT<odb_Set> it(sets);
//     for (it.first(); !it.isDone(); it.next()) std::puts(it.currentKey().cStr());
#pragma once

#include <memory>
#include <utility>

#include "odbaccess/odb_Set.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class EntityStorage;
}

// What can own sets: the root assembly, an instance, a part.
class odb_DiscreteEntity {
 public:
  explicit odb_DiscreteEntity(std::shared_ptr<odb_detail::EntityStorage> storage) : storage_(std::move(storage)) {}

  // Empty for an assembly without a name.
  odb_String name() const;

  // The sets by name; their names are read at the first call. `internal` asks for the sets that a
  // program made for itself as well; our files hold none, so it changes nothing. Good while the database is open.
  // Throw odb_Exception where the names cannot be read.
  odb_SetRepository& elementSets(bool internal) const;
  odb_SetRepository& nodeSets(bool internal) const;

 protected:
  std::shared_ptr<odb_detail::EntityStorage> storage_;
};
