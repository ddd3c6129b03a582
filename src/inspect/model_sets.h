// The sets of a model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "odbstore/database_file.h"
#include "odbstore/layout.h"

namespace inspect {

// Names live as long as the database's file.
struct ModelSet {
  odbstore::OwnerKind ownerKind = odbstore::OwnerKind::assembly;
  std::string_view owner;  // the instance or part; empty for the assembly
  odbstore::SetKind kind = odbstore::SetKind::element;
  std::string_view name;
  // As it stands in names of records: "__TOP", "__I_1_TOP".
  std::string tag;
  // Whether the extraction writes nothing over it: a set of warnings or information, by its name or its owner's.
  bool isLeftOut = false;
};

// All of them in the order in which the extraction visits them: of the assembly, then of each instance, then of each
// part, element sets before node sets, each by name, bytes ascending.
std::vector<ModelSet> modelSets(const odbstore::DatabaseFile& file);

// How many labels a set names, in all instances together. `set` is a place in modelSets(), as below.
std::int64_t memberCount(const odbstore::DatabaseFile& file, std::size_t set);

// The labels that a set has in one instance.
struct SetLabels {
  std::string_view instance;
  std::vector<int> labels;
};

// Those of all instances that it reaches into; those of a part's set come once for every instance of the part. Throws
// odbstore::StoreError where they cannot be read.
std::vector<SetLabels> setLabels(const odbstore::DatabaseFile& file, std::size_t set);

}  // namespace inspect
