#include "importers/calculix/deck/element_faces.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

namespace importers::calculix {

namespace {

using elements::Cell;

using Corners = std::array<int, 4>;
constexpr int kNone = -1;

constexpr std::array<Corners, 6> kBrick = {
    {{0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}}};
constexpr std::array<Corners, 5> kWedge = {
    {{0, 1, 2, kNone}, {3, 4, 5, kNone}, {0, 1, 4, 3}, {1, 2, 5, 4}, {2, 0, 3, 5}}};
constexpr std::array<Corners, 4> kTetrahedron = {
    {{0, 1, 2, kNone}, {0, 3, 1, kNone}, {1, 3, 2, kNone}, {2, 3, 0, kNone}}};
// The edges of surfaces.
constexpr std::array<Corners, 4> kQuadrilateral = {
    {{0, 1, kNone, kNone}, {1, 2, kNone, kNone}, {2, 3, kNone, kNone}, {3, 0, kNone, kNone}}};
constexpr std::array<Corners, 3> kTriangle = {{{0, 1, kNone, kNone}, {1, 2, kNone, kNone}, {2, 0, kNone, kNone}}};

std::span<const Corners> facesOf(Cell cell) {
  switch (cell) {
    case Cell::brick:
      return kBrick;
    case Cell::wedge:
      return kWedge;
    case Cell::tetrahedron:
      return kTetrahedron;
    case Cell::quadrilateral:
      return kQuadrilateral;
    case Cell::triangle:
      return kTriangle;
    case Cell::line:
      return {};
  }
  return {};
}

// "S3" is 3; 0 for anything else.
int numberOf(std::string_view face) {
  const bool isNumber = face.size() == 2 && face[0] == 'S' && face[1] >= '1' && face[1] <= '6';
  return isNumber ? face[1] - '0' : 0;
}

std::vector<std::size_t> allNodes(const ElementKind& kind) {
  std::vector<std::size_t> nodes(static_cast<std::size_t>(kind.nodes));
  std::iota(nodes.begin(), nodes.end(), std::size_t{0});
  return nodes;
}

std::vector<std::size_t> withMiddles(const Corners& corners, elements::Shape shape) {
  std::vector<std::size_t> nodes;
  for (const int corner : corners) {
    if (corner != kNone) nodes.push_back(static_cast<std::size_t>(corner));
  }
  const auto has = [&](std::size_t corner) {
    return std::find(corners.begin(), corners.end(), static_cast<int>(corner)) != corners.end();
  };
  for (const elements::Edge& edge : elements::edgesOf(shape)) {
    if (has(edge.first) && has(edge.last)) nodes.push_back(edge.middle);
  }
  return nodes;
}

}  // namespace

std::optional<std::vector<std::size_t>> nodesOfFace(const ElementKind& kind, std::string_view face) {
  if (!kind.shape) return std::nullopt;
  const bool isLine = elements::cellOf(*kind.shape) == Cell::line;
  const bool isShell = kind.family == Family::shell || kind.family == Family::membrane;
  const bool isSurface = isShell || kind.family == Family::plane || kind.family == Family::axisymmetric;
  int number = numberOf(face);
  const bool isSide = face == "SNEG" || face == "SPOS" || face == "SN" || face == "SP";
  // The first two faces of a shell are its sides.
  if ((isSurface && isSide) || (isShell && (number == 1 || number == 2)) || (isLine && number > 0)) {
    return allNodes(kind);
  }
  if (isShell) number -= 2;
  const std::span<const Corners> faces = facesOf(elements::cellOf(*kind.shape));
  if (number < 1 || static_cast<std::size_t>(number) > faces.size()) return std::nullopt;
  return withMiddles(faces[static_cast<std::size_t>(number) - 1], *kind.shape);
}

int faceOfExpanded(const ElementKind& kind, std::string_view face) {
  const int number = numberOf(face);
  switch (kind.family) {
    case Family::plane:
    case Family::axisymmetric:
      // Their own faces are the edges.
      if (face == "SN") return 1;
      if (face == "SP") return 2;
      return number >= 1 && number <= 4 ? number + 2 : 0;
    case Family::shell:
    case Family::membrane:
    case Family::beam:
    case Family::truss:
      if (face == "SNEG") return 1;
      if (face == "SPOS") return 2;
      return number;
    default:
      return 0;
  }
}

}  // namespace importers::calculix
