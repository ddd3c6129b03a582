// The names under which sets go into a database, chosen so that no two sets have records of the same name.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "odbstore/schema.h"

namespace importers {

// A set as the run's input names it. A surface makes two, one of elements and one of nodes.
struct NamedSet {
  odbstore::SetKind kind = odbstore::SetKind::node;
  std::string name;
  bool isOfSurface = false;
};

struct FinalSetName {
  std::string name;
  // Whether another set's name is the reason that this is not the name asked for. The suffix that the node set of a
  // surface always has does not count.
  bool isRenamed = false;
};

inline constexpr const char* kNodesSuffix = "-NODES";

// The name as in records, where '-' and ' ' become '_'.
std::string nameInRecords(std::string_view name);

// Whether records leave out a set of that name: they do so for names with "Warn" or "Info" in them, in this case.
bool isLeftOutOfRecords(std::string_view name);

// The final name of each set, in the order of `sets`, which is that of the run's input. Names are equal when they are
// so in records; their case counts. No two final names are equal.
// - The node set of a surface gets kNodesSuffix, always.
// - Of element sets with equal names the first keeps its name, one that is of no surface before those of surfaces.
// - Node sets whose name an element set has get kNodesSuffix; of other node sets with equal names the first keeps it.
// - What is taken then gets "-2", "-3", ... after it, the first that no set has.
std::vector<FinalSetName> uniqueSetNames(std::span<const NamedSet> sets);

}  // namespace importers
