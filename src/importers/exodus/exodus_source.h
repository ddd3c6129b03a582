// The Source of an Exodus II file.
#pragma once

#include <memory>
#include <string>

#include "importers/exodus/exodus_fields.h"
#include "importers/input/diagnostics.h"
#include "importers/run/source.h"

namespace importers::exodus {

struct ExodusRun {
  std::string results;
  bool isStrict = false;
  bool withSets = true;
  FieldChoice fields;
};

// `warn` must live as long. An ImportError for a file that cannot be opened.
std::unique_ptr<Source> openExodus(const ExodusRun& run, const WarningSink& warn);

}  // namespace importers::exodus
