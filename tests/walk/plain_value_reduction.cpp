#include "plain_value_reduction.h"

#include <functional>
#include <string_view>
#include <vector>

#include "reduce/engineering_extremes.h"
#include "reduce/extremes_records.h"
#include "reduce/field_value_access.h"
#include "result/extraction_switches.h"
#include "support/selection_oracle.h"

namespace {

template <class Order>
double plainExtreme(std::vector<double>& values, Order order) {
  const int k = engineeringCount(static_cast<int>(values.size()), extractionSwitches().percentage);
  values = SelectionOracle<double>(values, order).select(k);
  return values[static_cast<std::size_t>(k == 0 ? 0 : k - 1)];
}

// A quantity while it is reduced: what has been seen of it, and the values where a selection will need them.
struct Quantity {
  Extremes extremes = startingExtremes();
  std::vector<double> values;

  void take(int row, double value) {
    extremes.takePlain(value);
    if (!values.empty()) values[static_cast<std::size_t>(row)] = value;
  }
  void selectMin() {
    if (values.empty()) return;
    extremes.engineeringMin = plainExtreme(values, std::less<double>());
  }
  void selectMax() {
    if (values.empty()) return;
    extremes.engineeringMax = plainExtreme(values, std::greater<double>());
  }
};

// All that the value pass finds out.
struct Reduction {
  explicit Reduction(const ComponentFlags& components) : present(components) {}

  ComponentFlags present;
  int type = odb_FieldValue().type();
  Quantity main;
  std::array<Quantity, kVectorComponents> vector;
  std::array<Quantity, kTensorComponents.size()> tensor;
};

void allocateValues(Reduction& reduction, int count) {
  if (!extractionSwitches().wantsEngineering()) return;
  const auto size = static_cast<std::size_t>(count);
  reduction.main.values.resize(size);
  if (!extractionSwitches().fieldComponents) return;
  for (Quantity& component : reduction.vector) component.values.resize(size);
  for (std::size_t c = 0; c < reduction.present.size(); ++c) {
    if (reduction.present[c]) reduction.tensor[c].values.resize(size);
  }
}

void readValues(const odb_SequenceFieldValue& values, std::ostream& out,
                const odb_Sequence<odb_InvariantEnum>& invariants, const odb_String& valueName, bool flag,
                Reduction& reduction) {
  const bool components = extractionSwitches().fieldComponents;
  const ComponentSlots& slots = componentSlots();
  for (int i = 0; i < values.size(); ++i) {
    const odb_FieldValue value = values.constGet(static_cast<unsigned>(i));
    reduction.type = value.type();
    reduction.main.take(i, readFieldValue(value, out, invariants, reduction.present, valueName, flag));
    if (!components) continue;
    // Slots of another kind of value hold what was left in them, and are taken all the same.
    for (std::size_t c = 0; c < slots.vector.size(); ++c) reduction.vector[c].take(i, slots.vector[c]);
    if (!odb_isTensor(reduction.type)) continue;
    for (std::size_t c = 0; c < slots.tensor.size(); ++c) {
      if (reduction.present[c]) reduction.tensor[c].take(i, *slots.tensor[c]);
    }
  }
}

// The maxima are selected in the arrays as the minima have left them; tensor components go the other way round.
void selectEngineering(Reduction& reduction) {
  const ExtractionSwitches& switches = extractionSwitches();
  const bool vector = reduction.type == odb_Enum::vector;
  const bool tensor = odb_isTensor(reduction.type);
  const auto forEach = [](auto& quantities, bool wanted, auto&& select) {
    if (!wanted) return;
    for (Quantity& quantity : quantities) select(quantity);
  };
  const auto selectMin = [](Quantity& quantity) { quantity.selectMin(); };
  const auto selectMax = [](Quantity& quantity) { quantity.selectMax(); };
  if (switches.engineeringMin) {
    reduction.main.selectMin();
    forEach(reduction.vector, vector, selectMin);
  }
  if (switches.engineeringMax) {
    reduction.main.selectMax();
    forEach(reduction.vector, vector, selectMax);
    forEach(reduction.tensor, tensor, selectMax);
  }
  if (switches.engineeringMin) forEach(reduction.tensor, tensor, selectMin);
}

// Over a region the two engineering records of a scalar stand in the other order than over the whole model.
void writeScalarRecords(ExtremesWriter& records, bool wholeModel, const Extremes& extremes) {
  if (!wholeModel) {
    records.writeAll("", extremes);
    return;
  }
  records.write("", Extreme::max, extremes.max);
  records.write("", Extreme::min, extremes.min);
  if (extractionSwitches().engineeringMin) {
    records.write("", Extreme::engineeringMin, extremes.engineeringMin);
  }
  if (extractionSwitches().engineeringMax) {
    records.write("", Extreme::engineeringMax, extremes.engineeringMax);
  }
}

void writeVectorRecords(ExtremesWriter& records, const Reduction& reduction) {
  records.writeAll("__mag", reduction.main.extremes);
  if (!extractionSwitches().fieldComponents) return;
  std::array<Extremes, kVectorComponents> components;
  for (std::size_t c = 0; c < components.size(); ++c) components[c] = reduction.vector[c].extremes;
  records.writeVector(components, Extreme::engineeringMin);
}

void writeTensorRecords(ExtremesWriter& records, bool wholeModel, const Reduction& reduction) {
  const ExtractionSwitches& switches = extractionSwitches();
  const Extremes& mises = reduction.main.extremes;
  records.write("__mises", Extreme::max, mises.max);
  records.write("__mises", Extreme::min, mises.min);
  if (switches.engineeringMax) records.write("__mises", Extreme::engineeringMax, mises.engineeringMax);
  if (switches.engineeringMin) {
    // Over a region the two-dimensional surface kind has it under the name of the plain minimum: readers know it so.
    const bool underPlainName = !wholeModel && reduction.type == odb_Enum::tensor2dSurface;
    records.write("__mises", underPlainName ? Extreme::min : Extreme::engineeringMin, mises.engineeringMin);
  }
  if (!switches.fieldComponents) return;
  for (std::size_t c = 0; c < reduction.tensor.size(); ++c) {
    if (reduction.present[c]) records.writeAll(kTensorQuantities[c], reduction.tensor[c].extremes);
  }
}

void writeRecords(ExtremesWriter& records, bool wholeModel, const Reduction& reduction) {
  if (!wholeModel && reduction.main.extremes.max == kLowest<double>) return;
  if (reduction.type == odb_Enum::scalar) {
    writeScalarRecords(records, wholeModel, reduction.main.extremes);
  } else if (reduction.type == odb_Enum::vector) {
    writeVectorRecords(records, reduction);
  } else if (odb_isTensor(reduction.type)) {
    writeTensorRecords(records, wholeModel, reduction);
  }
}

// What still stands at its starting value was not found and is not written.
void writeInvariantRecords(ExtremesWriter& records, std::string_view quantity, const Extremes& extremes) {
  const ExtractionSwitches& switches = extractionSwitches();
  const auto write = [&](bool wanted, Extreme extreme, double value, double start) {
    if (wanted && value != start) records.write(quantity, extreme, value);
  };
  write(true, Extreme::max, extremes.max, kLowest<double>);
  write(true, Extreme::min, extremes.min, kHighest<double>);
  write(switches.engineeringMax, Extreme::engineeringMax, extremes.engineeringMax, kLowest<double>);
  write(switches.engineeringMin, Extreme::engineeringMin, extremes.engineeringMin, kHighest<double>);
}

void reduceInvariant(const odb_SequenceFieldValue& values, int slot, Quantity& quantity) {
  for (int i = 0; i < values.size(); ++i) {
    quantity.take(i, selectInvariant(values.constGet(static_cast<unsigned>(i)), slot));
  }
  const ExtractionSwitches& switches = extractionSwitches();
  if (switches.engineeringMin && quantity.extremes.min != kHighest<double>) quantity.selectMin();
  if (switches.engineeringMax && quantity.extremes.max != kLowest<double>) quantity.selectMax();
}

void reduceInvariants(const odb_SequenceFieldValue& values, ExtremesWriter& records,
                      const odb_Sequence<odb_InvariantEnum>& valid) {
  for (std::size_t slot = 0; slot < kInvariantQuantities.size(); ++slot) {
    if (!valid.isMember(kInvariantQuantities[slot].code)) continue;
    Quantity quantity;
    if (extractionSwitches().wantsEngineering()) quantity.values.resize(static_cast<std::size_t>(values.size()));
    reduceInvariant(values, static_cast<int>(slot), quantity);
    writeInvariantRecords(records, kInvariantQuantities[slot].quantity, quantity.extremes);
  }
}

}  // namespace

void plainReduceFieldOutputValues(const odb_SequenceFieldValue& values, std::ostream& out, odb_String prefix, int frame,
                                  odb_String scope, odb_String regionName, odb_String fieldName,
                                  const odb_Sequence<odb_InvariantEnum>& invariants,
                                  odb_Sequence<odb_String>& componentLabels, int, odb_String valueName, bool flag) {
  reductionResults().clearBlock();
  if (isScreenedRegion(regionName)) return;
  valueName.append("    ");
  connectTensorSlots(componentSlots());
  Reduction reduction(cutToComponents(componentLabels));
  allocateValues(reduction, values.size());
  readValues(values, out, invariants, valueName, flag, reduction);
  selectEngineering(reduction);
  const bool wholeModel = scope == odb_String("ALL");
  ExtremesWriter records(out, RecordHead(prefix, frame, wholeModel ? odb_String() : regionName, fieldName));
  writeRecords(records, wholeModel, reduction);
  if (extractionSwitches().tensorInvariants && cleanedName(fieldName) == "S") {
    ExtremesWriter withRegion(out, RecordHead(prefix, frame, regionName, fieldName));
    reduceInvariants(values, withRegion, invariants);
  }
}
