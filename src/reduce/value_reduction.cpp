#include "reduce/value_reduction.h"

#include <algorithm>
#include <limits>

#include "kernels/kernels.h"
#include "reduce/engineering_extremes.h"
#include "result/extraction_switches.h"

namespace {

using kernels::Order;

template <class Number>
void takeNumbersOf(Quantity& quantity, int place, int count, const Number* numbers) {
  // Infinities stand for no value: they replace nothing that a value would not.
  Number max = -std::numeric_limits<Number>::infinity();
  Number min = std::numeric_limits<Number>::infinity();
  kernels::columnExtremes(numbers, static_cast<std::size_t>(count), 1, &max, &min);
  if (static_cast<double>(max) > quantity.extremes.max) quantity.extremes.max = static_cast<double>(max);
  if (static_cast<double>(min) < quantity.extremes.min) quantity.extremes.min = static_cast<double>(min);
  if (!quantity.values.empty()) std::copy_n(numbers, count, quantity.values.data() + place);
}

template <class Number>
void takeColumnsOf(std::span<Quantity* const> quantities, int place, int count, const Number* rows, int width) {
  constexpr std::size_t kMost = kTensorComponents.size();
  const auto there = std::min(static_cast<std::size_t>(width), quantities.size());
  if (width == 1 && there == 1) {
    quantities[0]->takeNumbers(place, count, rows);
  } else {
    Number numbers[kMost][kTogether];
    std::array<Number*, kMost> columns;
    std::transform(std::begin(numbers), std::end(numbers), columns.begin(), [](Number* column) { return column; });
    kernels::splitColumns(rows, static_cast<std::size_t>(count), width, columns.data(), static_cast<int>(there), 0);
    for (std::size_t c = 0; c < there; ++c) quantities[c]->takeNumbers(place, count, columns[c]);
  }
  for (std::size_t c = there; c < quantities.size(); ++c) quantities[c]->takeRepeated(place, count, 0.0);
}

}  // namespace

void Quantity::takeRepeated(int place, int count, double value) {
  if (count == 0) return;
  extremes.takePlain(value);
  if (!values.empty()) std::fill_n(values.data() + place, count, value);
}

void Quantity::takeNumbers(int place, int count, const float* numbers) { takeNumbersOf(*this, place, count, numbers); }

void Quantity::takeNumbers(int place, int count, const double* numbers) { takeNumbersOf(*this, place, count, numbers); }

void Quantity::leaveOut(int place, int count) {
  if (!values.empty()) std::fill_n(values.data() + place, count, 0.0);
}

void Quantity::selectMin() {
  if (values.empty()) return;
  extremes.engineeringMin = engineeringExtreme(values.all(), extractionSwitches().percentage, Order::ascending);
}

void Quantity::selectMax() {
  if (values.empty()) return;
  extremes.engineeringMax = engineeringExtreme(values.all(), extractionSwitches().percentage, Order::descending);
}

void takeColumns(std::span<Quantity* const> quantities, int place, int count, const float* rows, int width) {
  takeColumnsOf(quantities, place, count, rows, width);
}

void takeColumns(std::span<Quantity* const> quantities, int place, int count, const double* rows, int width) {
  takeColumnsOf(quantities, place, count, rows, width);
}

ValueReduction::ValueReduction(const ComponentFlags& components, const odb_SequenceFieldValue& values)
    : present(components) {
  const auto count = static_cast<std::size_t>(values.size());
  if (!extractionSwitches().wantsEngineering() || count == 0) return;
  main.values = ValueArray<double>(count);
  if (!extractionSwitches().fieldComponents) return;
  const int last = values.constGet(static_cast<unsigned>(count - 1)).type();
  for (Quantity& component : vector) {
    if (last == odb_Enum::vector) component.values = ValueArray<double>(count);
  }
  for (std::size_t c = 0; c < present.size(); ++c) {
    if (odb_isTensor(last) && present[c]) tensor[c].values = ValueArray<double>(count);
  }
}
