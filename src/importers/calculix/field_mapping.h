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

// Known blocks under the names that users of field outputs know, all others under their own: vectors and tensors by
// what the file says of their components, all else one scalar per component, "<block>_<component>" ("<block>" when
// there is one component). Imaginary parts end in "_IM".
std::vector<MappedField> mapResult(const FrdResult& result);

}  // namespace importers::calculix
