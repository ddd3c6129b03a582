// The surface of a mesh: those faces of its cells that can be seen.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "inspect/mesh/model_mesh.h"

namespace report {

// A face or a line of a cell. Nodes are points of the mesh: corners around it, then the middles of its edges.
struct SkinFace {
  std::array<std::int32_t, 8> nodes{};
  std::uint32_t cell = 0;    // of the mesh
  std::uint8_t corners = 0;  // 2 for a line, 3 or 4
  std::uint8_t count = 0;    // of nodes
};

struct Skin {
  std::vector<SkinFace> outer;  // faces that one solid cell alone has, and flat cells
  std::vector<SkinFace> inner;  // faces between solid cells of different groups, once for each of them
  std::vector<SkinFace> lines;  // beams, trusses, springs
};

// Two solid cells share a face when they have its corners in common, whatever else they are: a quadratic cell fits a
// linear one. `groups` says of each cell to which group it belongs; empty where all belong to one. Of each list the
// order is that of the cells. Takes time n log n and about 24 bytes for each face of a solid cell. Of bundles of points
// nothing is drawn. A mesh of more than 2^31 - 1 points throws std::length_error.
Skin skinOf(const inspect::ModelMesh& mesh, std::span<const std::uint32_t> groups);

}  // namespace report
