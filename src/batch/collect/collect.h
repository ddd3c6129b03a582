// One table of all that a batch has extracted.
#pragma once

#include <string>
#include <vector>

#include "batch/state/batch_directory.h"
#include "tables/table.h"

namespace batch {

struct CollectRequest {
  std::vector<std::string> patterns;  // of names of records, as a shell has them; empty for all
  bool isLong = false;                // a row for each record instead of one for each input
};

struct CollectSummary {
  std::size_t rows = 0;
  std::size_t unfinished = 0;  // inputs that are running or missing
  std::size_t failed = 0;
};

// Writes the table: a row for each input with the columns input, status and reason, then one for each record in the
// order in which they come up. A name that stands in one params.txt several times has several columns, "U", "U#2". The
// long form has the columns input, status, reason, record and value, and a row with the first three alone for an input
// without records. In memory are one row and the names of records and inputs. Throws base::FileError, also for a
// directory that is not a batch's, and where a run adds records while the table is made.
CollectSummary collect(const BatchDirectory& directory, const CollectRequest& request, tables::Table& table);

}  // namespace batch
