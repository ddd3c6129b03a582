#include "reduce/read_values.h"

#include <algorithm>
#include <array>
#include <span>

#include "reduce/extremes_records.h"
#include "reduce/field_value_access.h"
#include "result/extraction_switches.h"

namespace {

using Numbers = std::array<float, kTogether>;

// So few that all invariants of them stay in the nearest cache.
constexpr int kInvariantsTogether = 256;

// Calls take(first, count) for stretches of a run.
template <class Take>
void forEachStretch(const odb_FieldValueRun& run, int together, Take&& take) {
  for (int from = 0; from < run.count(); from += together) take(from, std::min(together, run.count() - from));
}
template <class Take>
void forEachStretch(const odb_FieldValueRun& run, Take&& take) {
  forEachStretch(run, kTogether, take);
}

double elementOf(const float* row, int width, int column) {
  return column < width ? static_cast<double>(row[column]) : 0.0;
}

void readScalars(odb_FieldValueRun& run, ValueReduction& reduction) {
  const int width = run.dataCount();
  const bool isDouble = run.precision() != odb_Enum::singlePrecision;
  Quantity* const main = &reduction.main;
  forEachStretch(run, [&](int from, int count) {
    const int place = run.first() + from;
    if (isDouble) {
      takeColumns({&main, 1}, place, count, run.doubleData(from, count), width);
    } else {
      takeColumns({&main, 1}, place, count, run.floatData(from, count), width);
    }
  });
}

// Takes the columns of a run by quantity, and puts those of the last value into the slots.
void readComponents(odb_FieldValueRun& run, int from, int count, std::span<Quantity* const> quantities,
                    std::span<double* const> slots) {
  const int width = run.dataCount();
  const float* const rows = run.floatData(from, count);
  takeColumns(quantities, run.first() + from, count, rows, width);
  const float* const last = rows + static_cast<std::ptrdiff_t>(count - 1) * width;
  for (std::size_t c = 0; c < slots.size(); ++c) *slots[c] = elementOf(last, width, static_cast<int>(c));
}

void readVectors(odb_FieldValueRun& run, ValueReduction& reduction) {
  std::array<Quantity*, kVectorComponents> quantities;
  std::array<double*, kVectorComponents> slots;
  for (std::size_t c = 0; c < quantities.size(); ++c) {
    quantities[c] = &reduction.vector[c];
    slots[c] = &componentSlots().vector[c];
  }
  Numbers magnitudes;
  forEachStretch(run, [&](int from, int count) {
    run.magnitude(from, count, magnitudes.data());
    reduction.main.takeNumbers(run.first() + from, count, magnitudes.data());
    if (extractionSwitches().fieldComponents) readComponents(run, from, count, quantities, slots);
  });
}

// The data holds the present components alone, in their order.
void readTensors(odb_FieldValueRun& run, ValueReduction& reduction) {
  std::array<Quantity*, kTensorComponents.size()> quantities;
  std::array<double*, kTensorComponents.size()> slots;
  std::size_t there = 0;
  for (std::size_t c = 0; c < reduction.present.size(); ++c) {
    if (!reduction.present[c]) continue;
    quantities[there] = &reduction.tensor[c];
    slots[there] = componentSlots().tensor[c];
    ++there;
  }
  Numbers mises;
  forEachStretch(run, [&](int from, int count) {
    run.mises(from, count, mises.data());
    reduction.main.takeNumbers(run.first() + from, count, mises.data());
    if (!extractionSwitches().fieldComponents) return;
    readComponents(run, from, count, std::span(quantities).first(there), std::span(slots).first(there));
  });
}

// Calls take(run). Where no selection will ask for the values at their places, those that are stored once for several
// places come once.
template <class Take>
void forEachRun(const odb_SequenceFieldValue& values, Take&& take) {
  if (extractionSwitches().wantsEngineering()) {
    values.forEachRun(take);
  } else {
    values.forEachDistinctRun(take);
  }
}

// Whether the values of a run may be taken many at a time. Vectors and tensors in double precision are read one by one:
// what their components and accessors do is decided value by value.
bool isReadTogether(const odb_FieldValueRun& run) {
  if (run.precision() == odb_Enum::singlePrecision) {
    return run.type() == odb_Enum::scalar || run.type() == odb_Enum::vector || odb_isTensor(run.type());
  }
  return run.precision() == odb_Enum::doublePrecision && run.type() == odb_Enum::scalar;
}

void readTogether(odb_FieldValueRun& run, ValueReduction& reduction) {
  if (run.type() == odb_Enum::scalar) {
    readScalars(run, reduction);
  } else if (run.type() == odb_Enum::vector) {
    readVectors(run, reduction);
  } else {
    readTensors(run, reduction);
  }
  if (!extractionSwitches().fieldComponents || run.type() == odb_Enum::vector) return;
  for (std::size_t c = 0; c < reduction.vector.size(); ++c) {
    reduction.vector[c].takeRepeated(run.first(), run.count(), componentSlots().vector[c]);
  }
}

}  // namespace

void readValues(const odb_SequenceFieldValue& values, std::ostream& out,
                const odb_Sequence<odb_InvariantEnum>& invariants, const odb_String& valueName, bool flag,
                ValueReduction& reduction) {
  const bool components = extractionSwitches().fieldComponents;
  const ComponentSlots& slots = componentSlots();
  const auto readOne = [&](const odb_FieldValueRun& run, int i) {
    const odb_FieldValue value = run.value(i);
    const int place = run.first() + i;
    reduction.main.take(place, readFieldValue(value, out, invariants, reduction.present, valueName, flag));
    if (!components) return;
    for (std::size_t c = 0; c < slots.vector.size(); ++c) reduction.vector[c].take(place, slots.vector[c]);
    if (!odb_isTensor(value.type())) return;
    for (std::size_t c = 0; c < slots.tensor.size(); ++c) {
      if (reduction.present[c]) reduction.tensor[c].take(place, *slots.tensor[c]);
    }
  };
  forEachRun(values, [&](odb_FieldValueRun& run) {
    if (run.count() == 0) return;
    reduction.type = run.type();
    if (!odb_isTensor(run.type())) {
      for (Quantity& component : reduction.tensor) component.leaveOut(run.first(), run.count());
    }
    if (isReadTogether(run)) {
      readTogether(run, reduction);
    } else {
      for (int i = 0; i < run.count(); ++i) readOne(run, i);
    }
  });
}

void readInvariants(const odb_SequenceFieldValue& values, std::span<InvariantReduction> invariants) {
  std::vector<odb_InvariantEnum> codes;
  for (const InvariantReduction& invariant : invariants) {
    codes.push_back(kInvariantQuantities[static_cast<std::size_t>(invariant.slot)].code);
  }
  std::vector<float> numbers(codes.size() * kInvariantsTogether);
  forEachRun(values, [&](odb_FieldValueRun& run) {
    if (!isReadTogether(run)) {
      for (int i = 0; i < run.count(); ++i) {
        const odb_FieldValue value = run.value(i);
        for (InvariantReduction& invariant : invariants) {
          invariant.quantity.take(run.first() + i, selectInvariant(value, invariant.slot));
        }
      }
      return;
    }
    forEachStretch(run, kInvariantsTogether, [&](int from, int count) {
      run.invariants(codes, from, count, numbers.data());
      const float* of = numbers.data();
      for (InvariantReduction& invariant : invariants) {
        invariant.quantity.takeNumbers(run.first() + from, count, of);
        of += count;
      }
    });
  });
}
