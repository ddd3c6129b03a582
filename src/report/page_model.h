// The model on the page: its surface, labels and sets.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "report/page_data.h"
#include "report/surface.h"

namespace report {

// {vertices, elements: counts; coordinates, nodeLabels, elementLabels: arrays; instances: [{name, vertices: [first,
// count], elements: ...}]; faces: [{corners, nodes, inner, vertices, elements}]; edges; nodes, cells, triangles: counts
// of the model}. Vertices and elements may be of several instances in any order: `nodeInstances` and `elementInstances`
// say which, where there is more than one.
Json modelPart(const inspect::ModelMesh& mesh, const Surface& surface, PageData& data);

// [{name, kind: "element" or "node", size, members: array of elements or vertices}], without `members` where nothing of
// the set can be seen, or where there is no room left for it among `most` bytes; what has been left out for that is
// counted in `leftOut`.
Json setsPart(const std::vector<MeshSet>& sets, const Surface& surface, std::size_t most, PageData& data,
              std::size_t& leftOut);

}  // namespace report
