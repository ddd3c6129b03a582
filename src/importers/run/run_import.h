// An import from start to end, the same for every format.
#pragma once

#include <string>

#include "importers/input/diagnostics.h"
#include "importers/run/choice.h"
#include "importers/run/field_names.h"
#include "importers/run/source.h"
#include "odbwriter/database_writer.h"

namespace importers {

struct ImportRequest {
  std::string results;  // the file that the user named, for messages
  std::string output;   // the database to write
  odbstore::WriterOptions storage;
  Selection selection;
  FieldNaming naming = {};
};

struct ImportSummary {
  int steps = 0;
  int frames = 0;
  int fields = 0;     // different names
  int histories = 0;  // outputs
  int sets = 0;
  // Where the results of truncated files end, "step 2, time 0.5"; empty for complete ones.
  std::string cutOffBehind;
};

// Gets the outline, names its fields, makes its names unique, chooses, and writes what the source delivers. The
// database appears under its name when it is complete. If rows cannot be read, the source leaves them out if it can,
// and everything is written again. Throws ImportError if something cannot be read or does not exist,
// odbstore::StoreError if the database cannot be written.
ImportSummary runImport(Source& source, const ImportRequest& request, const WarningSink& warn,
                        const ProgressSink& progress = {});

// What such an import would select. Throws ImportError for a selection that finds nothing.
Outline listImport(Source& source, const ImportRequest& request, const WarningSink& warn);

}  // namespace importers
