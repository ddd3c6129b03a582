#include "inspect/mesh/cell_shapes.h"

#include <algorithm>
#include <array>

namespace inspect {

namespace {

enum class Dimension { unknown, line, surface, solid };

struct Start {
  std::string_view text;
  Dimension dimension;
};

// A type is known by how its name starts: longer ones before those that they start with.
constexpr std::array kStarts = {
    Start{"C3D", Dimension::solid},      Start{"F3D", Dimension::solid},     Start{"SC6", Dimension::solid},
    Start{"SC8", Dimension::solid},      Start{"HEX", Dimension::solid},     Start{"WEDGE", Dimension::solid},
    Start{"TET", Dimension::solid},      Start{"PYRAMID", Dimension::solid}, Start{"CPS", Dimension::surface},
    Start{"CPE", Dimension::surface},    Start{"CAX", Dimension::surface},   Start{"M3D", Dimension::surface},
    Start{"SPRING", Dimension::unknown}, Start{"STRI", Dimension::surface},  Start{"S3", Dimension::surface},
    Start{"S4", Dimension::surface},     Start{"S6", Dimension::surface},    Start{"S8", Dimension::surface},
    Start{"S9", Dimension::surface},     Start{"US3", Dimension::surface},   Start{"TRI", Dimension::surface},
    Start{"QUAD", Dimension::surface},   Start{"B2", Dimension::line},       Start{"B3", Dimension::line},
    Start{"T2D", Dimension::line},       Start{"T3D", Dimension::line},      Start{"U1", Dimension::line},
    Start{"LINE", Dimension::line},      Start{"D", Dimension::line},
};

// VTK has both ends of an edge before its middle (vtkQuadraticEdge.h).
constexpr std::array<std::uint8_t, 3> kEdgeOrder = {0, 2, 1};
// The triangle 0 1 2 of VTK's wedges has its normal pointing out of the wedge (vtkWedge.h), that of our elements into
// it, so nodes 1 and 2 change places, and 4 and 5. Edges of the quadratic wedge: (0,1) (1,2) (2,0) (3,4) (4,5) (5,3)
// (0,3) (1,4) (2,5), as in ours (vtkQuadraticWedge.h).
constexpr std::array<std::uint8_t, 6> kWedgeOrder = {0, 2, 1, 3, 5, 4};
constexpr std::array<std::uint8_t, 15> kQuadraticWedgeOrder = {0, 2, 1, 3, 5, 4, 8, 7, 6, 11, 10, 9, 12, 14, 13};

struct Row {
  Dimension dimension;
  std::size_t nodes;
  CellShape shape;
};

// All others have the order of VTK: corners, then the middles of the edges of the bottom, of the top, and between.
constexpr std::array kRows = {
    Row{Dimension::line, 2, {CellType::line, {}}},
    Row{Dimension::line, 3, {CellType::quadraticEdge, kEdgeOrder}},
    Row{Dimension::surface, 3, {CellType::triangle, {}}},
    Row{Dimension::surface, 4, {CellType::quad, {}}},
    Row{Dimension::surface, 6, {CellType::quadraticTriangle, {}}},
    Row{Dimension::surface, 8, {CellType::quadraticQuad, {}}},
    Row{Dimension::surface, 9, {CellType::biquadraticQuad, {}}},
    Row{Dimension::solid, 4, {CellType::tetrahedron, {}}},
    Row{Dimension::solid, 5, {CellType::pyramid, {}}},
    Row{Dimension::solid, 6, {CellType::wedge, kWedgeOrder}},
    Row{Dimension::solid, 8, {CellType::hexahedron, {}}},
    Row{Dimension::solid, 10, {CellType::quadraticTetrahedron, {}}},
    Row{Dimension::solid, 13, {CellType::quadraticPyramid, {}}},
    Row{Dimension::solid, 15, {CellType::quadraticWedge, kQuadraticWedgeOrder}},
    Row{Dimension::solid, 20, {CellType::quadraticHexahedron, {}}},
};

Dimension dimensionOf(std::string_view type) {
  // Flow network elements are called D alone; DASHPOTA and DCOUP3D are points and lines of another kind.
  if (type.starts_with("D") && type != "D") return Dimension::unknown;
  const auto found =
      std::find_if(kStarts.begin(), kStarts.end(), [&](const Start& start) { return type.starts_with(start.text); });
  return found == kStarts.end() ? Dimension::unknown : found->dimension;
}

}  // namespace

CellShape cellShape(std::string_view elementType, std::size_t nodes) {
  const Dimension dimension = dimensionOf(elementType);
  const auto row = std::find_if(kRows.begin(), kRows.end(),
                                [&](const Row& r) { return r.dimension == dimension && r.nodes == nodes; });
  if (row != kRows.end()) return row->shape;
  if (nodes == 1) return {CellType::vertex, {}};
  return {nodes == 2 ? CellType::line : CellType::polyVertex, {}};
}

}  // namespace inspect
