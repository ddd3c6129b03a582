#include "report/cell_faces.h"

#include <algorithm>
#include <map>
#include <vector>

namespace report {

namespace {

using inspect::CellType;

using Corners = std::vector<std::uint8_t>;

// What a kind looks like: its faces by corners, and the edges whose middles are nodes, in the order of those nodes.
struct Cell {
  std::uint8_t corners;
  std::vector<Corners> faces;
  std::vector<std::array<std::uint8_t, 2>> edges;
};

const Cell kTriangle = {3, {{0, 1, 2}}, {{0, 1}, {1, 2}, {2, 0}}};
const Cell kQuad = {4, {{0, 1, 2, 3}}, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}};
const Cell kTetra = {4, {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}};
const Cell kHexahedron = {
    8,
    {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}},
    {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}}};
const Cell kWedge = {6,
                     {{0, 1, 2}, {3, 5, 4}, {0, 3, 4, 1}, {1, 4, 5, 2}, {2, 5, 3, 0}},
                     {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}}};
const Cell kPyramid = {5,
                       {{0, 3, 2, 1}, {0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}},
                       {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}};

struct Kind {
  CellType type;
  const Cell* cell;
  bool isQuadratic;
};

// A node in the middle of the face, which some kinds have, comes last and is not drawn.
const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = {
      {CellType::triangle, &kTriangle, false},
      {CellType::quad, &kQuad, false},
      {CellType::tetrahedron, &kTetra, false},
      {CellType::hexahedron, &kHexahedron, false},
      {CellType::wedge, &kWedge, false},
      {CellType::pyramid, &kPyramid, false},
      {CellType::quadraticTriangle, &kTriangle, true},
      {CellType::quadraticQuad, &kQuad, true},
      {CellType::quadraticTetrahedron, &kTetra, true},
      {CellType::quadraticHexahedron, &kHexahedron, true},
      {CellType::quadraticWedge, &kWedge, true},
      {CellType::quadraticPyramid, &kPyramid, true},
      {CellType::biquadraticQuad, &kQuad, true},
  };
  return all;
}

std::uint8_t middleOf(const Cell& cell, std::uint8_t one, std::uint8_t other) {
  std::size_t edge = 0;
  while (cell.edges[edge] != std::array{one, other} && cell.edges[edge] != std::array{other, one}) ++edge;
  return static_cast<std::uint8_t>(cell.corners + edge);
}

CellFace makeFace(const Kind& kind, const Corners& corners) {
  CellFace face;
  face.corners = static_cast<std::uint8_t>(corners.size());
  std::copy(corners.begin(), corners.end(), face.places.begin());
  face.nodes = face.corners;
  if (!kind.isQuadratic) return face;
  for (std::size_t i = 0; i < corners.size(); ++i)
    face.places[face.nodes++] = middleOf(*kind.cell, corners[i], corners[(i + 1) % corners.size()]);
  return face;
}

std::map<CellType, std::vector<CellFace>> makeAllFaces() {
  std::map<CellType, std::vector<CellFace>> faces;
  for (const Kind& kind : kinds()) {
    for (const Corners& corners : kind.cell->faces) faces[kind.type].push_back(makeFace(kind, corners));
  }
  return faces;
}

}  // namespace

std::span<const CellFace> facesOf(inspect::CellType type) {
  static const std::map<CellType, std::vector<CellFace>> all = makeAllFaces();
  const auto found = all.find(type);
  if (found == all.end()) return {};
  return found->second;
}

bool isSolid(inspect::CellType type) { return facesOf(type).size() > 1; }

bool isLine(inspect::CellType type) { return type == CellType::line || type == CellType::quadraticEdge; }

}  // namespace report
