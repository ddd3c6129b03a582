// The shape functions of finite elements, nodes numbered as in the decks of the solver: corners first, then the middles
// of the edges, those of the bottom before those of the top before those between; a line of three nodes has its middle
// in the second place.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "elements/quadrature.h"

namespace elements {

enum class Shape {
  line2,
  line3,
  triangle3,
  triangle6,
  quadrilateral4,
  quadrilateral8,
  tetrahedron4,
  tetrahedron10,
  wedge6,
  wedge15,
  brick8,
  brick20
};
inline constexpr int kShapes = 12;
inline constexpr std::size_t kMostNodes = 20;

Cell cellOf(Shape shape);
std::size_t nodesOf(Shape shape);

// The shape without its middle nodes, which it looks like when each of them lies in the middle of its edge.
Shape straightShape(Shape shape);
struct Edge {
  std::size_t first, middle, last;  // places of nodes
};
std::span<const Edge> edgesOf(Shape shape);

// The value of each node's function at a point and its derivatives along the directions of the cell.
struct ShapeValues {
  std::array<double, kMostNodes> values{};
  std::array<std::array<double, 3>, kMostNodes> slopes{};
  double weight = 0.0;  // of the point in its rule
};
ShapeValues shapeValues(Shape shape, const std::array<double, 3>& at);

// Where the nodes lie in the cell.
std::span<const std::array<double, 3>> nodePlaces(Shape shape);

// The functions at the points of a rule that integrates mass, first and second moments: exactly for elements with
// straight edges, mass and first moments exactly for curved ones too. Made once per shape.
const std::vector<ShapeValues>& shapesAtPoints(Shape shape);

// The same at the nodes.
const std::vector<ShapeValues>& shapesAtNodes(Shape shape);

}  // namespace elements
