// The skin of a model as the page draws it: vertices, elements and faces numbered for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "report/skin.h"

namespace report {

// A set of the model: cells or points of the mesh, ascending, each once.
struct MeshSet {
  std::string name;  // with its owner's before it: "PART-1-1.TOP"
  bool isOfElements = true;
  std::vector<std::int32_t> members;
};

// Vertices are the points that the skin has, elements the cells. Faces and lines name vertices in `nodes` and elements
// in `cell`.
struct Surface {
  std::vector<std::int32_t> points;     // of each vertex
  std::vector<std::int32_t> vertexOf;   // of each point of the mesh; -1 for those that the skin does not have
  std::vector<std::int32_t> cells;      // of each element
  std::vector<std::int32_t> elementOf;  // of each cell of the mesh, likewise
  std::vector<float> coordinates;       // [vertices, 3]
  // By their corners, nodes and whether they are inner ones, then by their lowest vertex, which comes first in each.
  struct Faces {
    std::uint8_t corners = 0;  // 2 for lines
    std::uint8_t nodes = 0;
    bool isInner = false;
    std::vector<std::int32_t> vertices;  // [faces, nodes]
    std::vector<std::int32_t> elements;  // [faces]
  };
  std::vector<Faces> faces;
  std::vector<std::int32_t> edges;  // pairs of vertices: the feature edges of the outer faces

  std::size_t triangles() const;  // that the outer faces are drawn as
};

// Cells of the sets of elements that the page can show alone get the faces that bound those sets inside the model;
// where that would be more than the outer faces are, none of them.
Surface surfaceOf(const inspect::ModelMesh& mesh, std::span<const MeshSet> sets);

// For each cell the number of the group of those that are in the same sets of elements. Pure; also for tests.
std::vector<std::uint32_t> groupsOf(std::size_t cells, std::span<const MeshSet> sets);

}  // namespace report
