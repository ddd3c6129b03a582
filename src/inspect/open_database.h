// Databases of every layout.
#pragma once

#include <memory>
#include <string>

#include "odbstore/reader.h"

namespace inspect {

// Opens a database; ".odb" is appended where there is no file of the name and one with it. One of layout 1 is upgraded
// into a temporary file that is gone at once, which takes the time and the room on the disk that the copy needs. Throws
// base::NoFileError where there is no such file, odbstore::StoreError for all else.
std::shared_ptr<const odbstore::Reader> openDatabase(const std::string& path);

}  // namespace inspect
