// What the keywords of a configuration do, and which of them do nothing.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/configuration.h"
#include "inspect/contents.h"
#include "inspect/records.h"
#include "inspect/remark.h"

namespace inspect {

// Keywords that have no effect, whatever the database: for want of another one, beside another one, or ever.
Remarks effectRemarks(const Configuration& configuration);

// Whether a database could have records at all.
bool takesAnything(const ExtractionSwitches& switches);

// A field of a step, and whether it is extracted.
struct FieldChoice {
  const FieldContents* field = nullptr;
  bool isTaken = false;                    // in a frame at least
  std::vector<std::string_view> keywords;  // that take it, of those which are set; else those that would
};

// Of each of `fields`, which live as long.
std::vector<FieldChoice> fieldChoices(const std::vector<FieldContents>& fields, const ExtractionSwitches& switches);

// What a configuration asks of a database that has none of it, and where the run would end with an error.
Remarks databaseRemarks(const Configuration& configuration, const RecordList& records, const RecordList::Count& count,
                        const std::vector<FieldContents>& fields);

}  // namespace inspect
