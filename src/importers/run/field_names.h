// The names of fields in the database: what users ask for, what they expect of stresses and displacements, and apart
// where one name stands at several positions.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "importers/input/diagnostics.h"
#include "importers/run/outline.h"

namespace importers {

struct FieldNaming {
  bool keepNames = false;                                         // leave standard names alone
  std::vector<std::pair<std::string, std::string>> renames = {};  // old and new; old ones in any case
};

// Gives the fields of an outline
// - the name that `renames` has for their own one or for their standard name;
// - else their standard name, unless names are to be kept or two fields of one position have the same one;
// - "_ELEM", "_ELNO" or "_IP" after it where one name stands at several positions, for those that are not at nodes.
// A note lists the fields with standard names. An ImportError for `file` where a field that is to be renamed is not
// there, or another one at the same position has the new name.
void nameFields(Outline& outline, const FieldNaming& naming, const std::string& file, const WarningSink& warn);

}  // namespace importers
