// Which records `kolvex locate` is asked for.
#pragma once

#include <string>
#include <vector>

#include "inspect/records.h"
#include "locate_options.h"

namespace inspect {

// A name, all that it means, and the values that a file of records has for it.
struct ChosenRecord {
  std::string name;
  std::vector<Record> meanings;       // empty where the database has none of the name
  std::vector<std::string> recorded;  // empty without a file
};

// Each name once, in the order of the file or of the arguments; those that patterns find in the order of the
// extraction. A pattern that nothing fits is a name without a meaning. Throws base::FileError.
std::vector<ChosenRecord> chooseRecords(const LocateOptions& options, const RecordList& records);

}  // namespace inspect
