// Databases of every layout.
#pragma once

#include <memory>
#include <string>

#include "odbstore/reader.h"

namespace inspect {

// The path of a database that its user calls `name`: ".odb" is appended where there is no file of the name and one with
// it.
std::string databasePath(const std::string& name);

// Opens the database at databasePath(name), which is the name of its file unless it was upgraded. One of layout 1 is
// upgraded into a temporary file that is gone at once, which takes the time and the room on the disk that the copy
// needs. Throws base::NoFileError where there is no such file, odbstore::StoreError for all else.
std::shared_ptr<const odbstore::Reader> openDatabase(const std::string& name);

}  // namespace inspect
