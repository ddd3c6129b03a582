// Reading one value of a field output.
#pragma once

#include <array>
#include <ostream>

#include "odbaccess/odb_api.h"
#include "reduce/reduction_results.h"

// Through which the components of the value read last are handed over. Slots that a value does not set keep what the
// value before it left.
struct ComponentSlots {
  std::array<double, kVectorComponents> vector{};
  std::array<double*, kTensorComponents.size()> tensor{};
};

// The one set of slots of the process.
ComponentSlots& componentSlots();

// Points the tensor slots at the process's own numbers.
void connectTensorSlots(ComponentSlots& slots);

// The numbers of a value, one per component label of its field. Asking for the wrong precision raises an
// odb_Exception with the code precisionError, which names the accessor that refused.
odb_SequenceFloat data(const odb_FieldValue& value);
odb_SequenceDouble dataDouble(const odb_FieldValue& value);

// The main quantity of a value: the scalar itself, a vector's magnitude, a tensor's equivalent stress, 0 for any
// other type. Sets the vector slots when components are wanted, and the slots of the present tensor components (for
// the full three-dimensional kind only when components are wanted). Components are read in single precision alone,
// whatever the value has. `out`, `invariants`, `valueName` and `flag` are part of the interface and not used.
double readFieldValue(const odb_FieldValue& value, std::ostream& out, const odb_Sequence<odb_InvariantEnum>& invariants,
                      const ComponentFlags& componentPresent, const odb_String& valueName, bool flag);

// The invariant of slot 0 to 8: tresca, press, inv3, maximum, middle and minimum principal value, maximum and minimum
// in-plane and out-of-plane principal value. The lowest finite double for any other slot.
double selectInvariant(const odb_FieldValue& value, int slot);
