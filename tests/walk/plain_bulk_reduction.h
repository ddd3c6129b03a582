// The reduction of a block written as plain loops over whole arrays, one quantity after the other: what the fast one
// must agree with to the last bit.
#pragma once

#include "odbaccess/odb_api.h"

// Leaves its results where reduceBulkBlock() does.
void plainReduceBulkBlock(const odb_FieldBulkData& block);
