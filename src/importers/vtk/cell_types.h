// The kinds of cells, by the numbers that files of VTK give them, and the element types that they become.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace importers::vtk {

struct CellType {
  int code = 0;
  const char* name = "";       // of the element type; where `nodes` is 0 the number of nodes comes after it
  int nodes = 0;               // 0: any number
  std::span<const int> order;  // the cell's place of each node of the element; empty where they are the same
};

// The kind of a cell with so many points: of polygons, polylines and Lagrange cells that are plain cells by another
// number the plain one. Null for a number that VTK does not use for a cell with points.
const CellType* cellType(std::int64_t code, std::size_t points);

// VTK's number of a place without a cell.
inline constexpr std::int64_t kEmptyCell = 0;
// Its points are not listed one by one in files before version 5, but face by face.
inline constexpr std::int64_t kPolyhedron = 42;

// The name of the element type of a cell with so many points: "HEX20", "POLYGON7".
std::string elementType(const CellType& type, std::size_t points);

}  // namespace importers::vtk
