#include "reduce/read_values.h"

#include <algorithm>
#include <array>

#include "reduce/extremes_records.h"
#include "reduce/field_value_access.h"
#include "result/extraction_switches.h"

namespace {

// So many values are taken at a time.
constexpr int kTogether = 1024;
using Numbers = std::array<float, kTogether>;

// Calls take(first, count) for stretches of a run.
template <class Take>
void forEachStretch(const odb_FieldValueRun& run, Take&& take) {
  for (int from = 0; from < run.count(); from += kTogether) take(from, std::min(kTogether, run.count() - from));
}

// Element `column` of the data of some values; elements past the end of the data are 0.
template <class Number>
void takeElement(Quantity& quantity, int place, int count, const Number* rows, int width, int column) {
  if (column < width) {
    quantity.takeColumn(place, count, rows, width, column);
  } else {
    quantity.takeRepeated(place, count, 0.0);
  }
}

double elementOf(const float* row, int width, int column) {
  return column < width ? static_cast<double>(row[column]) : 0.0;
}

void readScalars(odb_FieldValueRun& run, ValueReduction& reduction) {
  const int width = run.dataCount();
  const bool isDouble = run.precision() != odb_Enum::singlePrecision;
  forEachStretch(run, [&](int from, int count) {
    const int place = run.first() + from;
    if (isDouble) {
      takeElement(reduction.main, place, count, run.doubleData(from, count), width, 0);
    } else {
      takeElement(reduction.main, place, count, run.floatData(from, count), width, 0);
    }
  });
}

void readVectors(odb_FieldValueRun& run, ValueReduction& reduction) {
  const bool components = extractionSwitches().fieldComponents;
  const int width = run.dataCount();
  Numbers magnitudes;
  forEachStretch(run, [&](int from, int count) {
    const int place = run.first() + from;
    run.magnitude(from, count, magnitudes.data());
    reduction.main.takeColumn(place, count, magnitudes.data(), 1, 0);
    if (!components) return;
    const float* const rows = run.floatData(from, count);
    const float* const last = rows + static_cast<std::ptrdiff_t>(count - 1) * width;
    for (int c = 0; c < kVectorComponents; ++c) {
      const auto at = static_cast<std::size_t>(c);
      takeElement(reduction.vector[at], place, count, rows, width, c);
      componentSlots().vector[at] = elementOf(last, width, c);
    }
  });
}

// The data holds the present components alone, in their order.
void readTensors(odb_FieldValueRun& run, ValueReduction& reduction) {
  const bool components = extractionSwitches().fieldComponents;
  const int width = run.dataCount();
  Numbers mises;
  forEachStretch(run, [&](int from, int count) {
    const int place = run.first() + from;
    run.mises(from, count, mises.data());
    reduction.main.takeColumn(place, count, mises.data(), 1, 0);
    if (!components) return;
    const float* const rows = run.floatData(from, count);
    const float* const last = rows + static_cast<std::ptrdiff_t>(count - 1) * width;
    int met = 0;
    for (std::size_t c = 0; c < reduction.present.size(); ++c) {
      if (!reduction.present[c]) continue;
      takeElement(reduction.tensor[c], place, count, rows, width, met);
      *componentSlots().tensor[c] = elementOf(last, width, met);
      ++met;
    }
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
    if (isReadTogether(run)) {
      readTogether(run, reduction);
    } else {
      for (int i = 0; i < run.count(); ++i) readOne(run, i);
    }
  });
}

void readInvariant(const odb_SequenceFieldValue& values, int slot, Quantity& quantity) {
  const odb_InvariantEnum code = kInvariantQuantities[static_cast<std::size_t>(slot)].code;
  Numbers numbers;
  forEachRun(values, [&](odb_FieldValueRun& run) {
    if (!isReadTogether(run)) {
      for (int i = 0; i < run.count(); ++i) quantity.take(run.first() + i, selectInvariant(run.value(i), slot));
      return;
    }
    forEachStretch(run, [&](int from, int count) {
      run.invariant(code, from, count, numbers.data());
      quantity.takeColumn(run.first() + from, count, numbers.data(), 1, 0);
    });
  });
}
