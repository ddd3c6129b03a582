// Reduction of a field output over a set, value by value.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// Reduces the values of one field output of one frame over one region and writes its records: of scalars, of vectors
// (magnitude, components), of tensors (equivalent stress, components), and of the stress field "S" the invariants.
//
//   prefix      the step name; with `fieldName` and `regionName` it is cleaned for the record names
//   frame       the increment number
//   scope       "ALL" when the values cover the whole model: the region's name is then left out of the record
//               names, and records are written even where no value was read
//   regionName  the region tag, with its leading "__"; one that contains "Warn" or "Info" writes nothing
//   componentLabels
//               is cut down to the last two characters of each label, in place
//   dataType, valueName, flag
//               are passed on or not read at all; they change nothing
//
// The kind of the value read last decides which records are written. The maximum and minimum in reductionResults() are
// set to 0. An exception of the library passes through; what was written before it stays.
void reduceFieldOutputValues(const odb_SequenceFieldValue& values, std::ostream& out, odb_String prefix, int frame,
                             odb_String scope, odb_String regionName, odb_String fieldName,
                             const odb_Sequence<odb_InvariantEnum>& invariants,
                             odb_Sequence<odb_String>& componentLabels, int dataType, odb_String valueName, bool flag);
