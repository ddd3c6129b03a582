#include "importers/calculix/dat/base_states.h"

#include "importers/calculix/dat/print_plans.h"

namespace importers::calculix {

std::set<std::size_t> findBaseStates(std::span<const PrintedTable> tables) {
  // Whether the tables from `first` on are those directly before `end`.
  const auto comesBefore = [&](std::size_t end, std::size_t first, std::size_t count) {
    for (std::size_t k = 0; k < count; ++k) {
      const PrintedTable& before = tables[end - count + k];
      const PrintedTable& of = tables[first + k];
      if (tableKindOf(before) != tableKindOf(of) || before.head.time != of.head.time) return false;
    }
    return true;
  };
  std::set<std::size_t> found;
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (tables[i].format->traits.begins != DatBegins::bucklingModes) continue;
    std::size_t first = i + 1;
    while (first < tables.size() && tables[first].format->rows != DatRows::eigenvalue) ++first;
    ++first;
    std::size_t count = 0;
    while (first + count < tables.size() && tables[first + count].format->rows != DatRows::eigenvalue &&
           tables[first + count].format->rows != DatRows::mode && count < i) {
      ++count;
    }
    // What follows the only mode may belong to the next step.
    while (count > 0 && !comesBefore(i, first, count)) --count;
    for (std::size_t k = i - count; k < i; ++k) found.insert(k);
  }
  return found;
}

}  // namespace importers::calculix
