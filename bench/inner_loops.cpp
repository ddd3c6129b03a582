// The loops over rows and the selection by themselves, on numbers that are in the cache.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "kernels/kernels.h"
#include "odbstore/crc32c.h"

namespace {

constexpr std::size_t kRows = 10'000;  // tensors, 240 kB
constexpr int kTensor = 6;
constexpr std::size_t kValues = 1'000'000;  // of a selection

std::vector<float> drawn(std::size_t count) {
  std::mt19937 random(1);
  std::normal_distribution<float> normal(0, 100);
  std::vector<float> numbers(count);
  for (float& number : numbers) number = normal(random);
  return numbers;
}

const std::vector<float>& tensors() {
  static const std::vector<float> numbers = drawn(kRows * kTensor);
  return numbers;
}

void setRate(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(tensors().size() * sizeof(float)));
}

void columns(benchmark::State& state, const kernels::Kernels& version) {
  float max[kTensor];
  float min[kTensor];
  for (auto _ : state) {
    std::fill_n(max, kTensor, std::numeric_limits<float>::lowest());
    std::fill_n(min, kTensor, std::numeric_limits<float>::max());
    version.columnExtremesFloat(tensors().data(), kRows, kTensor, max, min);
    benchmark::DoNotOptimize(max);
    benchmark::DoNotOptimize(min);
  }
  setRate(state);
}

void equivalentRange(benchmark::State& state, const kernels::Kernels& version) {
  for (auto _ : state) {
    kernels::EquivalentRange range;
    version.equivalentRange(tensors().data(), kRows, kTensor, false, &range);
    benchmark::DoNotOptimize(range);
  }
  setRate(state);
}

void equivalents(benchmark::State& state, const kernels::Kernels& version) {
  std::vector<float> out(kRows);
  for (auto _ : state) {
    version.equivalents(tensors().data(), kRows, kTensor, false, out.data());
    benchmark::DoNotOptimize(out.data());
  }
  setRate(state);
}

void lengths(benchmark::State& state, const kernels::Kernels& version) {
  for (auto _ : state) {
    float max = std::numeric_limits<float>::lowest();
    float min = std::numeric_limits<float>::max();
    version.lengthExtremesFloat(tensors().data(), 2 * kRows, 3, &max, &min);
    benchmark::DoNotOptimize(max);
    benchmark::DoNotOptimize(min);
  }
  setRate(state);
}

// Items are rows: all nine invariants of a row are one item.
void invariants(benchmark::State& state, const kernels::Kernels& version) {
  std::vector<float> out(9 * kRows);
  const auto column = [&](std::size_t i) { return out.data() + i * kRows; };
  kernels::InvariantColumns columns = {column(0), column(1), column(2), column(3), column(4),
                                       column(5), column(6), column(7), column(8)};
  for (auto _ : state) {
    version.invariantsFloat(tensors().data(), kRows, kTensor, false, &columns);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kRows));
}

// Items are values. `state.range(0)` is the percentage passed over.
template <class Select>
void select(benchmark::State& state, Select&& selectIn) {
  const std::vector<float> numbers = drawn(kValues);
  const auto k = static_cast<std::ptrdiff_t>(kValues) * state.range(0) / 100;
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<float> values = numbers;
    state.ResumeTiming();
    selectIn(values.data(), values.data() + k, values.data() + values.size());
    benchmark::DoNotOptimize(values.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kValues));
}

void selectOurs(benchmark::State& state) {
  select(state, [](float* first, float* target, float* last) {
    kernels::select(std::span(first, last), static_cast<std::size_t>(target - first), kernels::Order::ascending);
  });
}

void selectOfTheLibrary(benchmark::State& state) {
  select(state, [](float* first, float* target, float* last) { std::nth_element(first, target, last); });
}

void sumUp(benchmark::State& state, const odbstore::Crc32cVersion& version) {
  for (auto _ : state) benchmark::DoNotOptimize(version.sum(std::as_bytes(std::span(tensors())), 0));
  setRate(state);
}

}  // namespace

int main(int argc, char** argv) {
  for (const kernels::Kernels* version : kernels::runnable()) {
    const auto add = [&](const char* name, void (*function)(benchmark::State&, const kernels::Kernels&)) {
      benchmark::RegisterBenchmark((std::string(name) + "/" + version->name).c_str(),
                                   [=](benchmark::State& state) { function(state, *version); });
    };
    add("columns", columns);
    add("equivalentRange", equivalentRange);
    add("equivalents", equivalents);
    add("lengths", lengths);
    add("invariants", invariants);
  }
  for (const odbstore::Crc32cVersion& version : odbstore::crc32cVersions()) {
    benchmark::RegisterBenchmark((std::string("crc32c/") + version.name).c_str(),
                                 [&version](benchmark::State& state) { sumUp(state, version); });
  }
  for (const int percentage : {1, 10, 50}) {
    benchmark::RegisterBenchmark("select/ours", selectOurs)->Arg(percentage)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("select/nth_element", selectOfTheLibrary)
        ->Arg(percentage)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
