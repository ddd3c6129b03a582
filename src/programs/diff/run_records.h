// The records of one side of a comparison.
#pragma once

#include <memory>
#include <string>

#include "odbstore/reader.h"

namespace inspect {

struct RunRecords {
  std::string text;                                  // of params.txt
  std::shared_ptr<const odbstore::Reader> database;  // null where only a file of records is known
};

// What `path` is: a file of records, a directory with one, or a database, from which is extracted what `configuration`
// (the text of one) says, in a temporary directory. Throws base::FileError.
RunRecords readRecords(const std::string& path, const std::string& configuration);

}  // namespace inspect
