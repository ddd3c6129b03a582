// The command line of `kolvex import`.
#pragma once

#include <string>
#include <vector>

#include "importers/formats/formats.h"
#include "importers/run/choice.h"
#include "importers/run/field_names.h"
#include "tool/command.h"

namespace importers {

struct ImportOptions {
  std::string input;   // as given
  std::string output;  // empty: beside the results
  std::string format;  // empty: recognised by content
  bool isStrict = false;
  bool withMass = true;
  bool compress = false;
  bool checksum = false;
  bool isList = false;     // show what would be imported, and write nothing
  bool isJson = false;     // show it as JSON
  bool isFormats = false;  // show the formats
  Selection selection;
  ShapeChoice shapes;
  FieldNaming naming;
};

// Fills `options` and those of the formats when it parses; both must live as long.
tool::Command importCommand(ImportOptions& options, const std::vector<KnownFormat>& formats);

// The database that is asked for, else the one that the format puts beside the results.
std::string outputOf(const ImportOptions& options, const Importer& importer, const std::string& results);

}  // namespace importers
