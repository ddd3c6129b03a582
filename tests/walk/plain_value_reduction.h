// The reduction of the values of a region, one value after the other: what the fast one must agree with to the last
// bit.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// As reduceFieldOutputValues().
void plainReduceFieldOutputValues(const odb_SequenceFieldValue& values, std::ostream& out, odb_String prefix, int frame,
                                  odb_String scope, odb_String regionName, odb_String fieldName,
                                  const odb_Sequence<odb_InvariantEnum>& invariants,
                                  odb_Sequence<odb_String>& componentLabels, int dataType, odb_String valueName,
                                  bool flag);
