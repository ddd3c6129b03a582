#include "odbaccess/odb_Assembly.h"

#include "odbaccess/entity_storage.h"

odb_InstanceRepository& odb_Assembly::instances() const { return storage_->instances(); }
