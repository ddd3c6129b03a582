// The records of a field output over the whole model.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// Reduces every block, combines the blocks and writes the field's records: by the type of the last block the
// equivalent stress and components of a tensor, the magnitude and components of a vector, or a scalar.
//
// The field's extremes are those of the blocks' extremes, for the engineering ones too; the percentage is never
// applied across blocks. Component extremes are what the blocks left in reductionResults(). Under the scope "ALL"
// records are written even where no block held a value; under any other only when one did, with `regionName` in their
// names. `invariants`, `indentation` and `flag` are handed on to the reduction of a block.
void writeBulkFieldRecords(const odb_SequenceFieldBulkData& blocks, std::ostream& out, const odb_String& prefix,
                           int frame, const odb_String& scope, const odb_String& regionName,
                           const odb_String& fieldName, const odb_Sequence<odb_InvariantEnum>& invariants,
                           const odb_String& indentation, bool flag);
