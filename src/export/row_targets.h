// Which row of a field belongs to which point or cell of the mesh.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "inspect/mesh/model_mesh.h"
#include "odbstore/stored_block.h"

namespace vtk_export {

enum class Association { points, cells };

// Rows are counted as they are stored, through all blocks one after the other. A place may have several rows, as a node
// has one of each element in it; rows that are one stored row count once.
struct RowTargets {
  std::vector<std::int64_t> first;                            // of each place its first row, -1 for none
  std::vector<std::pair<std::int64_t, std::int64_t>> others;  // place and row, ascending, each once
  std::int64_t lost = 0;                                      // rows of labels that the mesh does not have
};

// Nodal and element-nodal rows belong to points, all others to cells. With `point` only rows of that integration point
// count.
Association associationOf(odbstore::Position position);
RowTargets rowTargets(const std::vector<const odbstore::StoredBlock*>& blocks, const inspect::ModelMesh& mesh,
                      Association association, std::optional<int> point);

}  // namespace vtk_export
