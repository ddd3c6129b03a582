// One field output over one region: whether it is wanted, and who reduces it.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// Handles one field output (or its subset for a set) of one frame.
//
//   stepName, increment   of the frame
//   regionKind  "ALL", "ELEMENT_SET" or "NODE_SET"
//   regionTag   empty for the whole model, else with its leading "__"; one that contains "Warn" or "Info" writes
//               nothing
//   depth       levels still allowed; below 1 nothing is reduced (names are still listed)
//
// A field output is wanted by what its description names, or when all are. The whole model is reduced from the bulk
// data, a set value by value. When values are not to be computed, the names that the reduction would write are listed
// instead, each with the value 0. Exceptions of the library pass through.
void processFieldOutput(const odb_FieldOutput& field, std::ostream& out, const odb_String& stepName, int increment,
                        const odb_String& regionKind, const odb_String& regionTag, const odb_String& indent, int depth);
