// The sets of a database as parts of its mesh.
#pragma once

#include <vector>

#include "odbstore/reader.h"
#include "report/surface.h"

namespace report {

// Sets of the assembly, the instances and the parts, in that order; and each instance as one, where there are several.
// Members without a place in the mesh are left out. Throws StoreError.
std::vector<MeshSet> meshSets(const odbstore::Reader& reader, const inspect::ModelMesh& mesh);

}  // namespace report
