// The record of what became of an input: the only truth about whether it is done.
//
// A file of lines "key<TAB>value", the last one "end". Backslashes, line breaks and tabs in values are written \\, \n
// and \t. It is written when everything else is, and under its name at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/state/file_stamp.h"
#include "batch/state/params_sum.h"

namespace batch {

struct Record {
  bool isDone = false;
  std::string reason;            // why it failed, in words that many inputs share: "time limit"
  std::string detail;            // what else is known: the last line that the program has said
  std::string input;             // absolute path
  std::vector<FileStamp> files;  // that were read, as they were before
  std::string settings;          // sum of the configuration and of what else decides about the records
  std::string version;           // of kolvex
  unsigned tries = 1;
  double seconds = 0;      // that all tries took
  std::int64_t ended = 0;  // nanoseconds since 1970
  ParamsSum params;        // of params.txt, where it is done
  std::string missing;     // where it is done: what params.txt does not have of what was wanted

  friend bool operator==(const Record&, const Record&) = default;
};

std::string textOf(const Record& record);

// Nothing where the text is not a whole record.
std::optional<Record> recordFrom(const std::string& text);

// Nothing where there is no record or not a whole one.
std::optional<Record> readRecord(const std::string& directory);

// Throws base::FileError.
void writeRecord(const std::string& directory, const Record& record, bool isSynced);

// Whether the params.txt beside the record is the one that it speaks of, and the marker is there.
bool hasItsParams(const std::string& directory, const Record& record);

// What a run has to be for its record to count.
struct Expected {
  std::string input;
  std::string settings;
  std::string version;
};

// Whether a record is of that input, those settings and that version.
bool isOf(const Record& record, const Expected& expected);

}  // namespace batch
