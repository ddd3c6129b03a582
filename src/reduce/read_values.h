// The value pass: reads every value of a region once.
#pragma once

#include <ostream>
#include <span>

#include "odbaccess/odb_api.h"
#include "reduce/value_reduction.h"

// Takes the main quantity of every value, and the components as far as they are wanted, in the order of the sequence.
// The slots of the components hold those of the last value afterwards. Of a value that is no vector the vector slots as
// they were left count all the same. `out`, `invariants`, `valueName` and `flag` go to readFieldValue().
void readValues(const odb_SequenceFieldValue& values, std::ostream& out,
                const odb_Sequence<odb_InvariantEnum>& invariants, const odb_String& valueName, bool flag,
                ValueReduction& reduction);

// An invariant by its slot, see selectInvariant(), and what has been seen of it.
struct InvariantReduction {
  int slot;
  Quantity quantity;
};

// Takes some invariants of every value, in one pass.
void readInvariants(const odb_SequenceFieldValue& values, std::span<InvariantReduction> invariants);
