// Which fields are stresses, strains and displacements, by the names that solvers give them. An extraction chooses
// fields by words in their descriptions, and has more of the field S than of others.
#pragma once

#include <string>
#include <string_view>

#include "odbstore/schema.h"

namespace importers {

struct FieldMeaning {
  odbstore::FieldInfo info;  // with the type, the components' labels and the invariants that make sense
  // The name that users of extractions expect, S, E or U; empty where that is in doubt.
  std::string standardName;
};

// The names of the table count in any case, without "_", "-" and blanks:
//
//   tensors   stress stresses cauchystress stresstensor                           "Stress components", S
//             sigma sig si s, and what has "stress" or "sigm" in its name         "Stress components"
//             strain strains totalstrain straintensor                             "Strain components", E
//             epsilon epsi eps ep e, and what has "strain" in its name            "Strain components"
//   vectors   displacement displacements displ disp, at nodes                     "Spatial displacement", U
//             u depl, and what has "displacement" in its name                     "Spatial displacement"
//   scalars   mises vonmises, and what has "stress" in its name                   "Stress"
//             what has "strain" in its name                                       "Strain"
//
// All else is described "Result" and its name. `type` is that of shapeFields().
FieldMeaning meaningOf(std::string_view name, odbstore::FieldType type, odbstore::Position position);

}  // namespace importers
