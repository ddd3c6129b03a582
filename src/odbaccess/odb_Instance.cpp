#include "odbaccess/odb_Instance.h"

#include "odbaccess/entity_storage.h"

odb_String odb_Instance::partName() const { return odb_String(storage_->partName()); }
