// Which fields of the database a result block becomes.
#pragma once

#include <string>
#include <vector>

#include "importers/calculix/frd_reader.h"
#include "odbstore/schema.h"

namespace importers::calculix {

// One field made of columns of a result block.
struct MappedField {
  std::string name;
  odbstore::FieldInfo info;
  std::vector<int> columns;  // of the block, in the order of the field's components

  bool isTensor() const { return odbstore::isTensorType(info.type); }
};

// Known blocks under the names that users of field outputs know, all others under their own. What a block holds is told
// by its components: six named ..XX, ..YY, ..ZZ, ..XY, ..YZ, ..ZX are a tensor; three named ..1, ..2, ..3 that the file
// declares as a vector are one, and more may follow. All else becomes one scalar per component, "<block>_<component>",
// or "<block>" when there is one component. Imaginary parts end in "_IM". No two fields of a block have the same name.
std::vector<MappedField> mapResult(const FrdResult& result);

}  // namespace importers::calculix
