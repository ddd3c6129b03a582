#include "reduce/value_reduction.h"

#include <algorithm>
#include <limits>

#include "kernels/kernels.h"
#include "reduce/engineering_extremes.h"
#include "result/extraction_switches.h"

namespace {

using kernels::Order;

template <class Number>
void takeColumnOf(Quantity& quantity, int place, int count, const Number* rows, int width, int column) {
  constexpr int kBuffer = 1024;
  Number buffer[kBuffer];
  // Infinities stand for no value: they replace nothing that a value would not.
  Number max = -std::numeric_limits<Number>::infinity();
  Number min = std::numeric_limits<Number>::infinity();
  for (int from = 0; from < count; from += kBuffer) {
    const int inBuffer = std::min(kBuffer, count - from);
    const Number* const first = rows + static_cast<std::ptrdiff_t>(from) * width + column;
    const Number* numbers = first;
    if (width != 1) {
      for (int i = 0; i < inBuffer; ++i) buffer[i] = first[static_cast<std::ptrdiff_t>(i) * width];
      numbers = buffer;
    }
    kernels::columnExtremes(numbers, static_cast<std::size_t>(inBuffer), 1, &max, &min);
    if (!quantity.values.empty()) std::copy_n(numbers, inBuffer, quantity.values.begin() + place + from);
  }
  if (static_cast<double>(max) > quantity.extremes.max) quantity.extremes.max = static_cast<double>(max);
  if (static_cast<double>(min) < quantity.extremes.min) quantity.extremes.min = static_cast<double>(min);
}

}  // namespace

void Quantity::takeRepeated(int place, int count, double value) {
  if (count == 0) return;
  extremes.takePlain(value);
  if (!values.empty()) std::fill_n(values.begin() + place, count, value);
}

void Quantity::takeColumn(int place, int count, const float* rows, int width, int column) {
  takeColumnOf(*this, place, count, rows, width, column);
}

void Quantity::takeColumn(int place, int count, const double* rows, int width, int column) {
  takeColumnOf(*this, place, count, rows, width, column);
}

void Quantity::selectMin() {
  if (values.empty()) return;
  extremes.engineeringMin = engineeringExtreme<double>(values, extractionSwitches().percentage, Order::ascending);
}

void Quantity::selectMax() {
  if (values.empty()) return;
  extremes.engineeringMax = engineeringExtreme<double>(values, extractionSwitches().percentage, Order::descending);
}

ValueReduction::ValueReduction(const ComponentFlags& components, int count) : present(components) {
  if (!extractionSwitches().wantsEngineering()) return;
  const auto size = static_cast<std::size_t>(count);
  main.values.resize(size);
  if (!extractionSwitches().fieldComponents) return;
  for (Quantity& component : vector) component.values.resize(size);
  for (std::size_t c = 0; c < present.size(); ++c) {
    if (present[c]) tensor[c].values.resize(size);
  }
}
