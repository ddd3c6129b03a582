#include "odbaccess/odb_DiscreteEntity.h"

#include "odbaccess/entity_storage.h"

odb_String odb_DiscreteEntity::name() const { return odb_String(storage_->name()); }

odb_SetRepository& odb_DiscreteEntity::elementSets(bool) const { return storage_->sets(odbstore::SetKind::element); }

odb_SetRepository& odb_DiscreteEntity::nodeSets(bool) const { return storage_->sets(odbstore::SetKind::node); }
