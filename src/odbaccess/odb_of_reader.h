// The access library's view of a database that is open already, for programs of ours that know the file too.
#pragma once

#include <memory>

#include "odbaccess/odb_Odb.h"

namespace odbstore {
class Reader;
}

// Shares the open file; not to be closed.
odb_Odb odbOfReader(std::shared_ptr<const odbstore::Reader> reader);
