#include "reduce/reduce_field_output_values.h"

#include <span>
#include <string_view>
#include <vector>

#include "reduce/extremes_records.h"
#include "reduce/field_value_access.h"
#include "reduce/read_values.h"
#include "reduce/side_by_side.h"
#include "reduce/value_reduction.h"
#include "result/extraction_switches.h"
#include "result/indentation.h"

namespace {

// The maxima are selected in the arrays as the minima have left them; tensor components go the other way round.
void selectEngineering(ValueReduction& reduction) {
  const auto minFirst = [](Quantity& quantity) {
    if (extractionSwitches().engineeringMin) quantity.selectMin();
    if (extractionSwitches().engineeringMax) quantity.selectMax();
  };
  const auto maxFirst = [](Quantity& quantity) {
    if (extractionSwitches().engineeringMax) quantity.selectMax();
    if (extractionSwitches().engineeringMin) quantity.selectMin();
  };
  SideBySide selections;
  const auto add = [&](Quantity& quantity, auto&& select) {
    if (quantity.values.empty()) return;
    selections.add(quantity.values.all().size(), [&quantity, select] { select(quantity); });
  };
  add(reduction.main, minFirst);
  for (Quantity& component : reduction.vector) add(component, minFirst);
  for (Quantity& component : reduction.tensor) add(component, maxFirst);
  selections.run();
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

void writeVectorRecords(ExtremesWriter& records, const ValueReduction& reduction) {
  records.writeAll("__mag", reduction.main.extremes);
  if (!extractionSwitches().fieldComponents) return;
  std::array<Extremes, kVectorComponents> components;
  for (std::size_t c = 0; c < components.size(); ++c) components[c] = reduction.vector[c].extremes;
  records.writeVector(components, Extreme::engineeringMin);
}

void writeTensorRecords(ExtremesWriter& records, bool wholeModel, const ValueReduction& reduction) {
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

void writeRecords(ExtremesWriter& records, bool wholeModel, const ValueReduction& reduction) {
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

// Selects where values have been seen.
void selectEngineering(std::span<InvariantReduction> invariants) {
  const ExtractionSwitches& switches = extractionSwitches();
  SideBySide selections;
  for (InvariantReduction& invariant : invariants) {
    Quantity& quantity = invariant.quantity;
    if (quantity.values.empty()) continue;
    selections.add(quantity.values.all().size(), [&] {
      if (switches.engineeringMin && quantity.extremes.min != kHighest<double>) quantity.selectMin();
      if (switches.engineeringMax && quantity.extremes.max != kLowest<double>) quantity.selectMax();
    });
  }
  selections.run();
}

void reduceInvariants(const odb_SequenceFieldValue& values, ExtremesWriter& records,
                      const odb_Sequence<odb_InvariantEnum>& valid) {
  const bool isKept = extractionSwitches().wantsEngineering();
  // With arrays of their values two at a time, so that all nine need not be in memory.
  const std::size_t together = isKept ? 2 : kInvariantQuantities.size();
  std::vector<InvariantReduction> invariants;
  const auto finish = [&] {
    readInvariants(values, invariants);
    selectEngineering(invariants);
    for (const InvariantReduction& invariant : invariants) {
      const std::string_view name = kInvariantQuantities[static_cast<std::size_t>(invariant.slot)].quantity;
      writeInvariantRecords(records, name, invariant.quantity.extremes);
    }
    invariants.clear();
  };
  for (std::size_t slot = 0; slot < kInvariantQuantities.size(); ++slot) {
    if (!valid.isMember(kInvariantQuantities[slot].code)) continue;
    invariants.push_back({static_cast<int>(slot), {}});
    if (isKept) invariants.back().quantity.values = ValueArray<double>(static_cast<std::size_t>(values.size()));
    if (invariants.size() == together) finish();
  }
  if (!invariants.empty()) finish();
}

}  // namespace

void reduceFieldOutputValues(const odb_SequenceFieldValue& values, std::ostream& out, odb_String prefix, int frame,
                             odb_String scope, odb_String regionName, odb_String fieldName,
                             const odb_Sequence<odb_InvariantEnum>& invariants,
                             odb_Sequence<odb_String>& componentLabels, int, odb_String valueName, bool flag) {
  reductionResults().clearBlock();
  if (isScreenedRegion(regionName)) return;
  static DeeperIndentation valueNames;
  connectTensorSlots(componentSlots());
  const bool wholeModel = scope.view() == "ALL";
  const ComponentFlags present = cutToComponents(componentLabels);
  {
    ValueReduction reduction(present, values);
    readValues(values, out, invariants, valueNames.of(valueName), flag, reduction);
    selectEngineering(reduction);
    ExtremesWriter records(out, RecordHead(prefix, frame, wholeModel ? odb_String() : regionName, fieldName));
    writeRecords(records, wholeModel, reduction);
  }
  if (extractionSwitches().tensorInvariants && cleanedName(fieldName) == "S") {
    ExtremesWriter withRegion(out, RecordHead(prefix, frame, regionName, fieldName));
    reduceInvariants(values, withRegion, invariants);
  }
}
