// The sets of a database as arrays that mark their members.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "export/row_targets.h"
#include "inspect/mesh/model_mesh.h"
#include "odbstore/reader.h"

namespace vtk_export {

struct SetArray {
  std::string name;  // "set TOP", "set I-1.TOP" of an instance or part
  Association association = Association::cells;
  std::vector<std::uint8_t> isMember;  // 1 for members, of each cell or point
};

// Element sets mark cells, node sets points. `patterns` are names with * and ?, of which a set has to fit one; none
// choose all. A set of a part means that set in all its instances. Throws StoreError, also where a pattern fits no set.
std::vector<SetArray> setArrays(const odbstore::Reader& reader, const inspect::ModelMesh& mesh,
                                const std::vector<std::string>& patterns);

}  // namespace vtk_export
