// Reduction of one block of bulk data.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// Reduces the rows of one block to its extremes, and each component's when components are wanted, and leaves them in
// reductionResults(). Nothing is written. A block with element labels and rows is element-based, any other node-based:
//
//   node-based     vectors by their magnitude (summed and rooted in the block's precision), all else by every number
//                  of a row. Component extremes of vectors gather over the blocks of a field; those of tensors are
//                  not touched.
//   element-based  tensors by their equivalent stress, vectors by their magnitude, scalars by themselves. Component
//                  extremes are the block's own. Engineering extremes of vectors keep their starting values.
//
// The other arguments are part of the interface and change nothing.
void reduceBulkBlock(const odb_FieldBulkData& block, std::ostream& out, const odb_String& prefix, int frame,
                     const odb_String& fieldName, const odb_Sequence<odb_InvariantEnum>& passThrough,
                     const odb_String& indentation, bool flag);
