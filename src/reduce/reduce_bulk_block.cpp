#include "reduce/reduce_bulk_block.h"

#include <array>
#include <limits>
#include <span>
#include <type_traits>
#include <vector>

#include "kernels/kernels.h"
#include "reduce/engineering_extremes.h"
#include "reduce/reduction_results.h"
#include "reduce/side_by_side.h"
#include "reduce/value_array.h"
#include "result/extraction_switches.h"

namespace {

using kernels::Order;

template <class Number>
struct BlockExtremes {
  RunningExtremes<Number> plain;
  Number engineeringMax = kLowest<Number>;
  Number engineeringMin = kHighest<Number>;
};

// A block in one precision.
template <class Number>
struct Rows {
  const odb_FieldBulkData& block;
  int count;
  int width;
  int type;

  // Calls take(place of the first row, number of rows, rows, tile) for tile after tile. Where no selection will ask for
  // the rows at their places, those that are stored once for several places come once.
  template <class Take>
  void forEachTile(Take&& take) const {
    const auto hand = [&](const odb_FieldBulkTile& tile) {
      const auto count = static_cast<std::size_t>(tile.count());
      if constexpr (std::is_same_v<Number, float>) {
        take(static_cast<std::size_t>(tile.first()), count, tile.data(), tile);
      } else {
        take(static_cast<std::size_t>(tile.first()), count, tile.dataDouble(), tile);
      }
    };
    if (extractionSwitches().wantsEngineering()) {
      block.forEachTile(hand);
    } else {
      block.forEachStoredTile(hand);
    }
  }
};

// An array for a value of each row, empty where no selection will ask for it.
template <class Number>
ValueArray<Number> arrayFor(int rows) {
  return ValueArray<Number>(extractionSwitches().wantsEngineering() ? static_cast<std::size_t>(rows) : 0);
}

// Both engineering extremes of an array, as far as they are wanted; the maximum in the order given.
template <class Number, class Result>
void addSelection(SideBySide& selections, ValueArray<Number>& values, Order maxOrder, Result& engineeringMax,
                  Result& engineeringMin) {
  if (values.empty()) return;
  const std::span<Number> all = values.all();
  selections.add(all.size(), [=, &engineeringMax, &engineeringMin] {
    const ExtractionSwitches& switches = extractionSwitches();
    if (switches.engineeringMin) {
      engineeringMin = static_cast<Result>(engineeringExtreme(all, switches.percentage, Order::ascending));
    }
    if (switches.engineeringMax) {
      engineeringMax = static_cast<Result>(engineeringExtreme(all, switches.percentage, maxOrder));
    }
  });
}

// The extremes of every column of a block, and the first columns themselves where a selection will ask for them.
// Infinities stand for a column without a value; no running extreme is replaced by one of them that a value would not
// replace.
template <class Number>
class ColumnReduction {
 public:
  ColumnReduction(const Rows<Number>& rows, int columns)
      : max_(static_cast<std::size_t>(rows.width), -std::numeric_limits<Number>::infinity()),
        min_(static_cast<std::size_t>(rows.width), std::numeric_limits<Number>::infinity()) {
    for (int c = 0; c < columns; ++c) columns_.push_back(arrayFor<Number>(rows.count));
    for (ValueArray<Number>& column : columns_) numbers_.push_back(column.data());
    isKept_ = columns > 0 && !columns_[0].empty();
  }

  void take(std::size_t first, std::size_t count, const Number* rows) {
    const int width = static_cast<int>(max_.size());
    kernels::columnExtremes(rows, count, width, max_.data(), min_.data());
    if (isKept_) kernels::splitColumns(rows, count, width, numbers_.data(), static_cast<int>(numbers_.size()), first);
  }

  void addPlainTo(std::size_t column, Extremes& extremes) const {
    const auto max = static_cast<double>(max_[column]);
    const auto min = static_cast<double>(min_[column]);
    if (max > extremes.max) extremes.max = max;
    if (min < extremes.min) extremes.min = min;
  }

  void addSelectionTo(SideBySide& selections, std::size_t column, Extremes& extremes) {
    addSelection(selections, columns_[column], Order::descending, extremes.engineeringMax, extremes.engineeringMin);
  }

 private:
  std::vector<Number> max_;
  std::vector<Number> min_;
  std::vector<ValueArray<Number>> columns_;
  std::vector<Number*> numbers_;  // of each of them
  bool isKept_ = false;
};

// How many components the rows of a vector block have.
template <class Number>
int vectorComponents(const Rows<Number>& rows) {
  return std::min(rows.width, kVectorComponents);
}

template <class Number>
BlockExtremes<Number> reduceNodeVectors(const Rows<Number>& rows) {
  const bool components = extractionSwitches().fieldComponents;
  BlockExtremes<Number> extremes;
  ValueArray<Number> magnitudes = arrayFor<Number>(rows.count);
  ColumnReduction<Number> columns(rows, components ? vectorComponents(rows) : 0);
  rows.forEachTile([&](std::size_t first, std::size_t count, const Number* numbers, const odb_FieldBulkTile&) {
    kernels::lengthExtremes(numbers, count, rows.width, &extremes.plain.max, &extremes.plain.min);
    if (!magnitudes.empty()) kernels::lengths(numbers, count, rows.width, magnitudes.data() + first);
    if (components) columns.take(first, count, numbers);
  });
  SideBySide selections;
  addSelection(selections, magnitudes, Order::descending, extremes.engineeringMax, extremes.engineeringMin);
  for (int j = 0; components && j < vectorComponents(rows); ++j) {
    const auto column = static_cast<std::size_t>(j);
    columns.addPlainTo(column, reductionResults().vector[column]);
    columns.addSelectionTo(selections, column, reductionResults().vector[column]);
  }
  selections.run();
  return extremes;
}

// Every number counts for the plain extremes, the last of a row for the engineering ones: the maximum in the order
// given.
template <class Number>
BlockExtremes<Number> reduceNumbers(const Rows<Number>& rows, Order maxOrder) {
  BlockExtremes<Number> extremes;
  ValueArray<Number> last = arrayFor<Number>(rows.count);
  Number* const column = last.data();
  rows.forEachTile([&](std::size_t first, std::size_t count, const Number* numbers, const odb_FieldBulkTile&) {
    const std::size_t all = count * static_cast<std::size_t>(rows.width);
    kernels::columnExtremes(numbers, all, 1, &extremes.plain.max, &extremes.plain.min);
    if (!last.empty()) kernels::splitColumns(numbers + rows.width - 1, count, rows.width, &column, 1, first);
  });
  SideBySide selections;
  addSelection(selections, last, maxOrder, extremes.engineeringMax, extremes.engineeringMin);
  selections.run();
  return extremes;
}

template <class Number>
BlockExtremes<Number> reduceNodeNumbers(const Rows<Number>& rows) {
  // In single precision, and here alone, the maximum is selected in ascending order too: a result that readers of the
  // records rely on.
  return reduceNumbers(rows, std::is_same_v<Number, float> ? Order::ascending : Order::descending);
}

template <class Number>
BlockExtremes<Number> reduceNodes(const Rows<Number>& rows) {
  if (extractionSwitches().fieldComponents) {
    for (Extremes& component : reductionResults().vector) component.resetEngineering();
  }
  return rows.type == odb_Enum::vector ? reduceNodeVectors(rows) : reduceNodeNumbers(rows);
}

// The equivalent stress stays a float whatever the precision of the rows.
template <class Number>
BlockExtremes<Number> reduceElementTensors(const Rows<Number>& rows, const ComponentFlags& present) {
  const bool components = extractionSwitches().fieldComponents;
  RunningExtremes<float> mises{-std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity()};
  ValueArray<float> values = arrayFor<float>(rows.count);
  ColumnReduction<Number> columns(rows, components ? rows.width : 0);
  rows.forEachTile([&](std::size_t first, std::size_t count, const Number* numbers, const odb_FieldBulkTile& tile) {
    if (values.empty()) {
      tile.takeMises(mises.max, mises.min);
    } else {
      tile.mises(values.data() + first);
      kernels::columnExtremes(values.data() + first, count, 1, &mises.max, &mises.min);
    }
    if (components) columns.take(first, count, numbers);
  });
  BlockExtremes<Number> extremes;
  if (static_cast<Number>(mises.max) > extremes.plain.max) extremes.plain.max = static_cast<Number>(mises.max);
  if (static_cast<Number>(mises.min) < extremes.plain.min) extremes.plain.min = static_cast<Number>(mises.min);
  SideBySide selections;
  addSelection(selections, values, Order::descending, extremes.engineeringMax, extremes.engineeringMin);
  for (std::size_t c = 0; components && c < present.size() && c < static_cast<std::size_t>(rows.width); ++c) {
    if (!present[c]) continue;
    Extremes& component = reductionResults().tensor[c];
    component.resetEngineering();
    columns.addPlainTo(c, component);
    columns.addSelectionTo(selections, c, component);
  }
  selections.run();
  return extremes;
}

template <class Number>
BlockExtremes<Number> reduceElementVectors(const Rows<Number>& rows) {
  const bool components = extractionSwitches().fieldComponents;
  BlockExtremes<Number> extremes;
  ColumnReduction<Number> columns(rows, 0);
  rows.forEachTile([&](std::size_t first, std::size_t count, const Number* numbers, const odb_FieldBulkTile&) {
    kernels::lengthExtremes(numbers, count, rows.width, &extremes.plain.max, &extremes.plain.min);
    if (components) columns.take(first, count, numbers);
  });
  for (int j = 0; components && j < vectorComponents(rows); ++j) {
    columns.addPlainTo(static_cast<std::size_t>(j), reductionResults().vector[static_cast<std::size_t>(j)]);
  }
  return extremes;
}

template <class Number>
BlockExtremes<Number> reduceElements(const Rows<Number>& rows, const ComponentFlags& present) {
  if (extractionSwitches().fieldComponents) {
    for (Extremes& component : reductionResults().vector) component.resetPlain();
    for (Extremes& component : reductionResults().tensor) component.resetPlain();
  }
  if (odb_isTensor(rows.type)) return reduceElementTensors(rows, present);
  return rows.type == odb_Enum::vector ? reduceElementVectors(rows) : reduceNumbers(rows, Order::descending);
}

ComponentFlags presentComponents(const odb_FieldBulkData& block) {
  ComponentFlags present{};
  if (!odb_isTensor(block.type())) return present;
  const odb_Sequence<odb_String> labels = block.componentLabels();
  for (int i = 0; i < labels.size(); ++i) markComponent(labels.constGet(i).view(), present);
  return present;
}

template <class Number>
void reduceRows(const odb_FieldBulkData& block) {
  const Rows<Number> rows{block, block.valueCount(), block.width(), block.type()};
  const bool elementBased = block.numberOfElements() != 0 && block.elementLabels() != nullptr;
  const BlockExtremes<Number> extremes =
      elementBased ? reduceElements(rows, presentComponents(block)) : reduceNodes(rows);
  Extremes& results = reductionResults().block;
  results.max = static_cast<double>(extremes.plain.max);
  results.min = static_cast<double>(extremes.plain.min);
  results.engineeringMax = static_cast<double>(extremes.engineeringMax);
  results.engineeringMin = static_cast<double>(extremes.engineeringMin);
}

}  // namespace

void reduceBulkBlock(const odb_FieldBulkData& block, std::ostream&, const odb_String&, int, const odb_String&,
                     const odb_Sequence<odb_InvariantEnum>&, const odb_String&, bool) {
  reductionResults().clearBlock();
  if (block.precision() == odb_Enum::singlePrecision) {
    reduceRows<float>(block);
  } else {
    reduceRows<double>(block);
  }
}
