#include "odbaccess/odb_Set.h"

#include "odbaccess/set_storage.h"

odb_String odb_Set::name() const { return storage_ ? storage_->name() : odb_String(); }
