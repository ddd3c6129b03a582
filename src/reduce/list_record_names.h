// The names of the records of a field output, without the work.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"
#include "result/record_name.h"

// Writes every record that reducing `field` over a region would write, with the value 0: for the stress field "S" over
// a set the invariants (the whole model gets none), then by the type of the first block those of a tensor, a vector or
// a scalar. A vector lists all three components whatever it has. A field without blocks writes nothing.
void listRecordNames(const odb_FieldOutput& field, std::ostream& out, const RecordHead& head, bool wholeModel);
