#include "reduce/field_value_access.h"

#include "result/extraction_switches.h"

namespace {

// Where the accessors stand in the interface that scripts and traces know.
constexpr const char* kAccessorFile = "odb_FieldValue.h";
constexpr int kDataLine = 92;
constexpr int kDataDoubleLine = 110;

[[noreturn]] void throwPrecisionError(const char* message, int line) {
  odb_Exception(odb_Exception::precisionError, atr_translate(message).Result()).Throw(kAccessorFile, line);
}

void readVectorSlots(const odb_FieldValue& value) {
  const odb_SequenceFloat numbers = data(value);
  for (int i = 0; i < kVectorComponents; ++i) {
    componentSlots().vector[static_cast<std::size_t>(i)] = static_cast<double>(numbers.constGet(i));
  }
}

// The data holds the present components alone, in their order.
void readTensorSlots(const odb_FieldValue& value, const ComponentFlags& present) {
  int met = 0;
  for (std::size_t c = 0; c < present.size(); ++c) {
    if (present[c]) *componentSlots().tensor[c] = static_cast<double>(data(value).constGet(met++));
  }
}

}  // namespace

ComponentSlots& componentSlots() {
  static ComponentSlots slots;
  return slots;
}

void connectTensorSlots(ComponentSlots& slots) {
  static std::array<double, kTensorComponents.size()> numbers{};
  for (std::size_t c = 0; c < numbers.size(); ++c) slots.tensor[c] = &numbers[c];
}

odb_SequenceFloat data(const odb_FieldValue& value) {
  if (value.precision() == odb_Enum::doublePrecision) {
    throwPrecisionError("Data is double precision.  Use dataDouble()", kDataLine);
  }
  return odb_SequenceFloat(value.floatData(), value.dataCount());
}

odb_SequenceDouble dataDouble(const odb_FieldValue& value) {
  if (value.precision() == odb_Enum::singlePrecision) {
    throwPrecisionError("Data is single precision.  Use data()", kDataDoubleLine);
  }
  return odb_SequenceDouble(value.doubleData(), value.dataCount());
}

double readFieldValue(const odb_FieldValue& value, std::ostream&, const odb_Sequence<odb_InvariantEnum>&,
                      const ComponentFlags& componentPresent, const odb_String&, bool) {
  const double first = value.precision() != odb_Enum::singlePrecision ? dataDouble(value).constGet(0)
                                                                      : static_cast<double>(data(value).constGet(0));
  const int type = value.type();
  if (type == odb_Enum::scalar) return first;
  const bool components = extractionSwitches().fieldComponents;
  if (type == odb_Enum::vector) {
    if (components) readVectorSlots(value);
    return static_cast<double>(value.magnitude());
  }
  if (!odb_isTensor(type)) return 0.0;
  // Only the full kind leaves its components alone when they are not wanted. With the other kinds a field in double
  // precision ends the run even then.
  if (type != odb_Enum::tensor3dFull || components) readTensorSlots(value, componentPresent);
  return static_cast<double>(value.mises());
}

double selectInvariant(const odb_FieldValue& value, int slot) {
  switch (slot) {
    case 0:
      return static_cast<double>(value.tresca());
    case 1:
      return static_cast<double>(value.press());
    case 2:
      return static_cast<double>(value.inv3());
    case 3:
      return static_cast<double>(value.maxPrincipal());
    case 4:
      return static_cast<double>(value.midPrincipal());
    case 5:
      return static_cast<double>(value.minPrincipal());
    case 6:
      return static_cast<double>(value.maxInPlanePrincipal());
    case 7:
      return static_cast<double>(value.minInPlanePrincipal());
    case 8:
      return static_cast<double>(value.outOfPlanePrincipal());
    default:
      return kLowest<double>;
  }
}
