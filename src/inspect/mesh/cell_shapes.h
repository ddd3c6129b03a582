// What elements are in pictures: the cell types of VTK, which viewers share, and the order of their nodes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace inspect {

// The numbers are VTK's (vtkCellType.h).
enum class CellType : std::uint8_t {
  vertex = 1,
  polyVertex = 2,
  line = 3,
  triangle = 5,
  quad = 9,
  tetrahedron = 10,
  hexahedron = 12,
  wedge = 13,
  pyramid = 14,
  quadraticEdge = 21,
  quadraticTriangle = 22,
  quadraticQuad = 23,
  quadraticTetrahedron = 24,
  quadraticHexahedron = 25,
  quadraticWedge = 26,
  quadraticPyramid = 27,
  biquadraticQuad = 28
};

struct CellShape {
  CellType type = CellType::polyVertex;
  // Node i of the cell is node order[i] of the element; empty where both have the same order.
  std::span<const std::uint8_t> order;
};

// The cell of an element by its type as the database has it (C3D20R, S8R, B32, HEX20, ...) and its number of nodes,
// with the nodes of elements in the order of the database (elements/shape_functions.h). The type says whether the
// element is a solid, a surface or a line, the number of nodes which one. Springs, gaps and others whose type says
// nothing are points or, of two nodes, lines; of more nodes a bundle of points. `nodes` is at least 1.
CellShape cellShape(std::string_view elementType, std::size_t nodes);

}  // namespace inspect
