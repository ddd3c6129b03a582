// What of a cell can be seen: its faces.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "inspect/mesh/cell_shapes.h"

namespace report {

// A face of a cell by places of the cell's nodes in VTK's order: `corners` of them, in their order around it, then the
// middles of the edges from each corner to the next where the cell is quadratic. A flat cell is its own face.
struct CellFace {
  std::array<std::uint8_t, 8> places{};
  std::uint8_t corners = 0;
  std::uint8_t nodes = 0;
};

// Empty for points and lines. VTK's documentation of each class shows the numbering of its corners and edges.
std::span<const CellFace> facesOf(inspect::CellType type);

// Whether its faces bound a volume, so that two cells can share one.
bool isSolid(inspect::CellType type);
bool isLine(inspect::CellType type);

}  // namespace report
