#include "plain_bulk_reduction.h"

#include <cmath>
#include <functional>
#include <span>
#include <type_traits>
#include <vector>

#include "reduce/engineering_extremes.h"
#include "reduce/reduction_results.h"
#include "result/extraction_switches.h"
#include "support/selection_oracle.h"

namespace {

template <class Number>
struct BlockExtremes {
  RunningExtremes<Number> plain;
  Number engineeringMax = kLowest<Number>;
  Number engineeringMin = kHighest<Number>;
};

// The rows of a block in one precision.
template <class Number>
struct Rows {
  const Number* numbers;
  int count;
  int width;
  int type;

  const Number* row(int i) const { return numbers + static_cast<std::ptrdiff_t>(i) * width; }
};

// An array for a value of each row, empty where no selection will ask for it.
template <class Number>
std::vector<Number> scratchFor(int rows) {
  return std::vector<Number>(extractionSwitches().wantsEngineering() ? static_cast<std::size_t>(rows) : 0);
}

template <class Number>
void keep(std::vector<Number>& scratch, int row, Number value) {
  if (!scratch.empty()) scratch[static_cast<std::size_t>(row)] = value;
}

template <class Number, class Order>
Number plainExtreme(std::span<Number> values, Order order) {
  const int k = engineeringCount(static_cast<int>(values.size()), extractionSwitches().percentage);
  const std::vector<Number> moved = SelectionOracle<Number>({values.begin(), values.end()}, order).select(k);
  std::copy(moved.begin(), moved.end(), values.begin());
  return moved[static_cast<std::size_t>(k == 0 ? 0 : k - 1)];
}

// Both engineering extremes of an array, as far as they are wanted; the maximum in the order given.
template <class Number, class Result, class MaxOrder>
void selectInto(std::span<Number> values, MaxOrder maxOrder, Result& engineeringMax, Result& engineeringMin) {
  if (values.empty()) return;
  const ExtractionSwitches& switches = extractionSwitches();
  if (switches.engineeringMin) {
    engineeringMin = static_cast<Result>(plainExtreme<Number>(values, std::less<double>()));
  }
  if (switches.engineeringMax) {
    engineeringMax = static_cast<Result>(plainExtreme<Number>(values, maxOrder));
  }
}

// The components of a vector block, as far as a row has them.
template <class Number>
void takeVectorComponents(const Rows<Number>& rows) {
  for (int j = 0; j < kVectorComponents && j < rows.width; ++j) {
    Extremes& component = reductionResults().vector[static_cast<std::size_t>(j)];
    for (int i = 0; i < rows.count; ++i) component.takePlain(static_cast<double>(rows.row(i)[j]));
  }
}

template <class Number>
Number magnitude(const Number* row, int width) {
  Number sum = 0;
  for (int j = 0; j < width; ++j) sum += row[j] * row[j];
  return std::sqrt(sum);
}

template <class Number>
void selectVectorComponents(const Rows<Number>& rows) {
  for (int j = 0; j < kVectorComponents && j < rows.width; ++j) {
    std::vector<Number> values = scratchFor<Number>(rows.count);
    for (int i = 0; i < rows.count; ++i) keep(values, i, rows.row(i)[j]);
    Extremes& component = reductionResults().vector[static_cast<std::size_t>(j)];
    selectInto<Number>(values, std::greater<double>(), component.engineeringMax, component.engineeringMin);
  }
}

template <class Number>
BlockExtremes<Number> reduceNodeVectors(const Rows<Number>& rows) {
  BlockExtremes<Number> extremes;
  std::vector<Number> magnitudes = scratchFor<Number>(rows.count);
  for (int i = 0; i < rows.count; ++i) {
    const Number value = magnitude(rows.row(i), rows.width);
    extremes.plain.take(value);
    keep(magnitudes, i, value);
  }
  selectInto<Number>(magnitudes, std::greater<double>(), extremes.engineeringMax, extremes.engineeringMin);
  if (extractionSwitches().fieldComponents) {
    takeVectorComponents(rows);
    selectVectorComponents(rows);
  }
  return extremes;
}

template <class Number>
BlockExtremes<Number> reduceNodeNumbers(const Rows<Number>& rows) {
  BlockExtremes<Number> extremes;
  std::vector<Number> last = scratchFor<Number>(rows.count);
  for (int i = 0; i < rows.count; ++i) {
    for (int j = 0; j < rows.width; ++j) extremes.plain.take(rows.row(i)[j]);
    keep(last, i, rows.row(i)[rows.width - 1]);
  }
  // In single precision, and here alone, the maximum is selected in ascending order too: a result that readers of the
  // records rely on.
  if constexpr (std::is_same_v<Number, float>) {
    selectInto<Number>(last, std::less<double>(), extremes.engineeringMax, extremes.engineeringMin);
  } else {
    selectInto<Number>(last, std::greater<double>(), extremes.engineeringMax, extremes.engineeringMin);
  }
  return extremes;
}

template <class Number>
BlockExtremes<Number> reduceNodes(const Rows<Number>& rows) {
  if (extractionSwitches().fieldComponents) {
    for (Extremes& component : reductionResults().vector) component.resetEngineering();
  }
  return rows.type == odb_Enum::vector ? reduceNodeVectors(rows) : reduceNodeNumbers(rows);
}

template <class Number>
void reduceTensorComponents(const Rows<Number>& rows, const ComponentFlags& present) {
  for (std::size_t c = 0; c < present.size(); ++c) {
    if (!present[c] || static_cast<int>(c) >= rows.width) continue;
    Extremes& component = reductionResults().tensor[c];
    component.resetEngineering();
    std::vector<double> values = scratchFor<double>(rows.count);
    for (int i = 0; i < rows.count; ++i) {
      const auto value = static_cast<double>(rows.row(i)[c]);
      component.takePlain(value);
      keep(values, i, value);
    }
    selectInto<double>(values, std::greater<double>(), component.engineeringMax, component.engineeringMin);
  }
}

template <class Number>
BlockExtremes<Number> reduceElementTensors(const Rows<Number>& rows, const float* mises,
                                           const ComponentFlags& present) {
  BlockExtremes<Number> extremes;
  std::vector<float> values = scratchFor<float>(rows.count);
  for (int i = 0; i < rows.count; ++i) {
    extremes.plain.take(static_cast<Number>(mises[i]));
    keep(values, i, mises[i]);
  }
  selectInto<float>(values, std::greater<double>(), extremes.engineeringMax, extremes.engineeringMin);
  if (extractionSwitches().fieldComponents) reduceTensorComponents(rows, present);
  return extremes;
}

template <class Number>
BlockExtremes<Number> reduceElementVectors(const Rows<Number>& rows) {
  BlockExtremes<Number> extremes;
  for (int i = 0; i < rows.count; ++i) extremes.plain.take(magnitude(rows.row(i), rows.width));
  if (extractionSwitches().fieldComponents) takeVectorComponents(rows);
  return extremes;
}

template <class Number>
BlockExtremes<Number> reduceElementScalars(const Rows<Number>& rows) {
  BlockExtremes<Number> extremes;
  std::vector<double> values = scratchFor<double>(rows.count);
  for (int i = 0; i < rows.count; ++i) {
    for (int j = 0; j < rows.width; ++j) extremes.plain.take(rows.row(i)[j]);
    keep(values, i, static_cast<double>(rows.row(i)[rows.width - 1]));
  }
  selectInto<double>(values, std::greater<double>(), extremes.engineeringMax, extremes.engineeringMin);
  return extremes;
}

template <class Number>
BlockExtremes<Number> reduceElements(const Rows<Number>& rows, const odb_FieldBulkData& block,
                                     const ComponentFlags& present) {
  if (extractionSwitches().fieldComponents) {
    for (Extremes& component : reductionResults().vector) component.resetPlain();
    for (Extremes& component : reductionResults().tensor) component.resetPlain();
  }
  if (odb_isTensor(rows.type)) return reduceElementTensors(rows, block.mises(), present);
  return rows.type == odb_Enum::vector ? reduceElementVectors(rows) : reduceElementScalars(rows);
}

ComponentFlags presentComponents(const odb_FieldBulkData& block) {
  ComponentFlags present{};
  if (!odb_isTensor(block.type())) return present;
  const odb_Sequence<odb_String> labels = block.componentLabels();
  for (std::size_t c = 0; c < present.size(); ++c) present[c] = labels.isMember(odb_String(kTensorComponents[c]));
  return present;
}

template <class Number>
void reduceRows(const odb_FieldBulkData& block, const Number* numbers) {
  const Rows<Number> rows{numbers, block.valueCount(), block.width(), block.type()};
  const bool elementBased = block.numberOfElements() != 0 && block.elementLabels() != nullptr;
  const BlockExtremes<Number> extremes =
      elementBased ? reduceElements(rows, block, presentComponents(block)) : reduceNodes(rows);
  Extremes& results = reductionResults().block;
  results.max = static_cast<double>(extremes.plain.max);
  results.min = static_cast<double>(extremes.plain.min);
  results.engineeringMax = static_cast<double>(extremes.engineeringMax);
  results.engineeringMin = static_cast<double>(extremes.engineeringMin);
}

}  // namespace

void plainReduceBulkBlock(const odb_FieldBulkData& block) {
  reductionResults().clearBlock();
  if (block.precision() == odb_Enum::singlePrecision) {
    reduceRows<float>(block, block.data());
  } else {
    reduceRows<double>(block, block.dataDouble());
  }
}
