#include "inspect/places/row_values.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "reduce/extremes_records.h"

namespace inspect {

namespace {

// Which number of a row: the one that goes by the name of the field alone, or a component.
struct Column {
  bool isMain = true;
  std::size_t vector = 0;             // of a vector, from 0
  std::optional<std::size_t> tensor;  // of a tensor, in the order 11, 22, 33, 12, 13, 23
};

Column columnOf(std::string_view quantity) {
  const auto tensor = std::find(kTensorComponents.begin(), kTensorComponents.end(), quantity);
  if (tensor != kTensorComponents.end())
    return {false, 0, static_cast<std::size_t>(tensor - kTensorComponents.begin())};
  if (quantity.size() == 1 && quantity[0] >= '1' && quantity[0] <= '3')
    return {false, static_cast<std::size_t>(quantity[0] - '1'), {}};
  return {};
}

bool isElementBased(const odb_FieldBulkData& block) {
  return block.elementLabels() != nullptr && block.numberOfElements() != 0;
}

RowValues rowsOf(const odb_FieldBulkData& block, const int* rowOf, std::size_t values) {
  RowValues rows;
  rows.instance = block.instanceName().cStr();
  rows.rows = block.valueCount();
  rows.values.resize(values);
  rows.rowOf = rowOf;
  rows.nodes = block.nodeLabels();
  rows.elements = block.elementLabels();
  rows.points = block.integrationPoints();
  return rows;
}

// The number of a row of which every number counts: the one that is the extreme, of the engineering ones the last.
template <class Number>
double numberOf(const Number* row, int width, const WantedValues& wanted) {
  if (wanted.isEngineering()) return static_cast<double>(row[width - 1]);
  double best = std::numeric_limits<double>::quiet_NaN();
  for (int c = 0; c < width; ++c) {
    const auto value = static_cast<double>(row[c]);
    if (std::isnan(best) || (wanted.isMax() ? value > best : value < best)) best = value;
  }
  return best;
}

enum class Rule { length, mises, column, numbers };

// Puts the numbers of a tile in their places.
template <class Number>
void takeTile(const odb_FieldBulkTile& tile, const Number* rows, int width, Rule rule, std::size_t column,
              const WantedValues& wanted, double* out) {
  const auto count = static_cast<std::size_t>(tile.count());
  if (rule == Rule::length) {
    std::vector<Number> lengths(count);
    kernels::lengths(rows, count, width, lengths.data());
    std::copy(lengths.begin(), lengths.end(), out);
  } else if (rule == Rule::mises) {
    std::vector<float> mises(count);
    tile.mises(mises.data());
    std::copy(mises.begin(), mises.end(), out);
  } else {
    for (std::size_t i = 0; i < count; ++i) {
      const Number* const row = rows + i * static_cast<std::size_t>(width);
      out[i] = rule == Rule::column ? static_cast<double>(row[column]) : numberOf(row, width, wanted);
    }
  }
}

RowValues blockValues(const odb_FieldBulkData& block, Rule rule, std::size_t column, const WantedValues& wanted) {
  RowValues rows = rowsOf(block, block.rowOf(), static_cast<std::size_t>(block.storedCount()));
  block.forEachStoredTile([&](const odb_FieldBulkTile& tile) {
    double* const out = rows.values.data() + tile.first();
    if (tile.data() != nullptr) {
      takeTile(tile, tile.data(), block.width(), rule, column, wanted, out);
    } else {
      takeTile(tile, tile.dataDouble(), block.width(), rule, column, wanted, out);
    }
  });
  return rows;
}

bool hasLabel(const odb_FieldBulkData& block, std::string_view label) {
  const odb_Sequence<odb_String> labels = block.componentLabels();
  for (int i = 0; i < labels.size(); ++i) {
    if (labels.constGet(i).view() == label) return true;
  }
  return false;
}

// How a block counts towards a component, if it does.
std::optional<std::size_t> componentColumn(const odb_FieldBulkData& block, const Column& column) {
  const auto width = static_cast<std::size_t>(block.width());
  if (!column.tensor) {
    const bool isThere = block.type() == odb_Enum::vector && column.vector < width;
    return isThere ? std::optional(column.vector) : std::nullopt;
  }
  const bool isThere = odb_isTensor(block.type()) && isElementBased(block) && *column.tensor < width &&
                       hasLabel(block, kTensorComponents[*column.tensor]);
  return isThere ? column.tensor : std::nullopt;
}

// Components start anew with every block on elements; engineering ones, which node-based vectors and tensors on
// elements have, are those of the last block that sets them.
std::vector<RowValues> componentValues(const odb_SequenceFieldBulkData& blocks, const Column& column,
                                       const WantedValues& wanted) {
  std::vector<RowValues> values;
  for (int b = 0; b < blocks.size(); ++b) {
    const odb_FieldBulkData& block = blocks.constGet(b);
    const bool isOnElements = isElementBased(block);
    const std::optional<std::size_t> at = componentColumn(block, column);
    const bool isSet = at && !(wanted.isEngineering() && isOnElements && !column.tensor);
    if (wanted.isEngineering() ? isSet || (!isOnElements && !column.tensor) : isOnElements) values.clear();
    if (isSet) values.push_back(blockValues(block, Rule::column, *at, wanted));
  }
  return values;
}

}  // namespace

std::vector<RowValues> wholeModelValues(const odb_FieldOutput& field, const WantedValues& wanted) {
  const Column column = columnOf(wanted.quantity);
  const odb_SequenceFieldBulkData& blocks = field.bulkDataBlocks();
  if (!column.isMain) return componentValues(blocks, column, wanted);
  std::vector<RowValues> values;
  for (int b = 0; b < blocks.size(); ++b) {
    const odb_FieldBulkData& block = blocks.constGet(b);
    if (block.valueCount() == 0) continue;
    const bool isOnElements = isElementBased(block);
    const bool isVector = block.type() == odb_Enum::vector;
    if (wanted.isEngineering() && isVector && isOnElements) continue;
    const bool isMises = isOnElements && odb_isTensor(block.type());
    values.push_back(blockValues(block, isVector ? Rule::length : isMises ? Rule::mises : Rule::numbers, 0, wanted));
    if (!isOnElements && !isVector && block.precision() == odb_Enum::singlePrecision)
      values.back().maxOrder = kernels::Order::ascending;
  }
  return values;
}

namespace {

std::optional<odb_InvariantEnum> invariantOf(std::string_view quantity) {
  for (const InvariantQuantity& known : kInvariantQuantities) {
    if (known.quantity.substr(2) == quantity) return known.code;
  }
  return std::nullopt;
}

// Reads one number of each value of a run.
class RunReader {
 public:
  RunReader(const odb_FieldOutput& field, const WantedValues& wanted)
      : column_(columnOf(wanted.quantity)), invariant_(invariantOf(wanted.quantity)) {
    odb_Sequence<odb_String> labels = field.componentLabels();
    present_ = cutToComponents(labels);
  }

  // Whether values of the type have such a number.
  bool reads(int type) const {
    if (invariant_ || (column_.isMain && (type == odb_Enum::scalar || odb_isTensor(type)))) return true;
    if (column_.isMain) return type == odb_Enum::vector;
    return column_.tensor ? odb_isTensor(type) : type == odb_Enum::vector;
  }

  void read(odb_FieldValueRun& run, int from, int count, double* out) {
    floats_.resize(static_cast<std::size_t>(count));
    if (invariant_) {
      run.invariants(std::span(&*invariant_, 1), from, count, floats_.data());
    } else if (column_.isMain && run.type() == odb_Enum::vector) {
      run.magnitude(from, count, floats_.data());
    } else if (column_.isMain && odb_isTensor(run.type())) {
      run.mises(from, count, floats_.data());
    } else {
      readColumn(run, from, count, out);
      return;
    }
    std::copy(floats_.begin(), floats_.end(), out);
  }

 private:
  // The data of tensors holds the components that are there, in their order.
  int place() const {
    if (column_.isMain) return 0;
    if (!column_.tensor) return static_cast<int>(column_.vector);
    return static_cast<int>(
        std::count(present_.begin(), present_.begin() + static_cast<std::ptrdiff_t>(*column_.tensor), true));
  }

  void readColumn(odb_FieldValueRun& run, int from, int count, double* out) const {
    const int width = run.dataCount();
    const int at = place();
    const bool isDouble = run.precision() != odb_Enum::singlePrecision;
    const double* const doubles = isDouble ? run.doubleData(from, count) : nullptr;
    const float* const floats = isDouble ? nullptr : run.floatData(from, count);
    for (int i = 0; i < count; ++i) {
      const std::ptrdiff_t number = static_cast<std::ptrdiff_t>(i) * width + at;
      out[i] = at >= width ? 0.0 : isDouble ? doubles[number] : static_cast<double>(floats[number]);
    }
  }

  Column column_;
  std::optional<odb_InvariantEnum> invariant_;
  ComponentFlags present_{};
  std::vector<float> floats_;
};

}  // namespace

std::vector<RowValues> setValues(const odb_FieldOutput& field, const WantedValues& wanted) {
  constexpr int kTogether = 4096;
  RunReader reader(field, wanted);
  const odb_SequenceFieldBulkData& blocks = field.bulkDataBlocks();
  std::vector<RowValues> values;
  int block = 0;
  field.values().forEachRun([&](odb_FieldValueRun& run) {
    const odb_FieldBulkData& bulk = blocks.constGet(block++);
    if (run.count() == 0 || !reader.reads(run.type())) return;
    RowValues rows = rowsOf(bulk, nullptr, static_cast<std::size_t>(run.count()));
    for (int from = 0; from < run.count(); from += kTogether)
      reader.read(run, from, std::min(kTogether, run.count() - from), rows.values.data() + from);
    values.push_back(std::move(rows));
  });
  return values;
}

}  // namespace inspect
