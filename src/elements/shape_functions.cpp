#include "elements/shape_functions.h"

#include <cmath>
#include <cstddef>

namespace elements {

namespace {

// A number with its derivatives along the three directions of the cell, so that each function is written once.
struct Slope {
  double value = 0.0;
  std::array<double, 3> slope{};
};

Slope operator+(const Slope& a, const Slope& b) {
  return {a.value + b.value, {a.slope[0] + b.slope[0], a.slope[1] + b.slope[1], a.slope[2] + b.slope[2]}};
}
Slope operator*(double f, const Slope& a) { return {f * a.value, {f * a.slope[0], f * a.slope[1], f * a.slope[2]}}; }
Slope operator*(const Slope& a, const Slope& b) {
  Slope product{a.value * b.value, {}};
  for (std::size_t k = 0; k < 3; ++k) product.slope[k] = a.slope[k] * b.value + a.value * b.slope[k];
  return product;
}
Slope operator+(const Slope& a, double b) { return {a.value + b, a.slope}; }
Slope operator-(const Slope& a, const Slope& b) { return a + (-1.0) * b; }
Slope oneMinus(const Slope& a) { return (-1.0) * a + 1.0; }

using Point = std::array<Slope, 3>;
using Place = std::array<double, 3>;
using Functions = std::array<Slope, kMostNodes>;

constexpr std::array<Edge, 1> kLineEdges = {{{0, 1, 2}}};
constexpr std::array<Edge, 3> kTriangleEdges = {{{0, 3, 1}, {1, 4, 2}, {2, 5, 0}}};
constexpr std::array<Edge, 4> kQuadrilateralEdges = {{{0, 4, 1}, {1, 5, 2}, {2, 6, 3}, {3, 7, 0}}};
constexpr std::array<Edge, 6> kTetrahedronEdges = {{{0, 4, 1}, {1, 5, 2}, {2, 6, 0}, {0, 7, 3}, {1, 8, 3}, {2, 9, 3}}};
constexpr std::array<Edge, 9> kWedgeEdges = {
    {{0, 6, 1}, {1, 7, 2}, {2, 8, 0}, {3, 9, 4}, {4, 10, 5}, {5, 11, 3}, {0, 12, 3}, {1, 13, 4}, {2, 14, 5}}};
constexpr std::array<Edge, 12> kBrickEdges = {{{0, 8, 1},
                                               {1, 9, 2},
                                               {2, 10, 3},
                                               {3, 11, 0},
                                               {4, 12, 5},
                                               {5, 13, 6},
                                               {6, 14, 7},
                                               {7, 15, 4},
                                               {0, 16, 4},
                                               {1, 17, 5},
                                               {2, 18, 6},
                                               {3, 19, 7}}};

constexpr std::array<Place, 2> kLineCorners = {{{-1, 0, 0}, {1, 0, 0}}};
constexpr std::array<Place, 3> kTriangleCorners = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}};
constexpr std::array<Place, 4> kQuadrilateralCorners = {{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}};
constexpr std::array<Place, 4> kTetrahedronCorners = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
constexpr std::array<Place, 6> kWedgeCorners = {{{0, 0, -1}, {1, 0, -1}, {0, 1, -1}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}}};
constexpr std::array<Place, 8> kBrickCorners = {
    {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}}};

struct Description {
  Shape shape;
  Shape straight;
  Cell cell;
  std::span<const Place> corners;
  std::span<const Edge> edges;  // of a shape with middle nodes
};
const std::array<Description, kShapes> kDescriptions = {{
    {Shape::line2, Shape::line2, Cell::line, kLineCorners, {}},
    {Shape::line3, Shape::line2, Cell::line, kLineCorners, kLineEdges},
    {Shape::triangle3, Shape::triangle3, Cell::triangle, kTriangleCorners, {}},
    {Shape::triangle6, Shape::triangle3, Cell::triangle, kTriangleCorners, kTriangleEdges},
    {Shape::quadrilateral4, Shape::quadrilateral4, Cell::quadrilateral, kQuadrilateralCorners, {}},
    {Shape::quadrilateral8, Shape::quadrilateral4, Cell::quadrilateral, kQuadrilateralCorners, kQuadrilateralEdges},
    {Shape::tetrahedron4, Shape::tetrahedron4, Cell::tetrahedron, kTetrahedronCorners, {}},
    {Shape::tetrahedron10, Shape::tetrahedron4, Cell::tetrahedron, kTetrahedronCorners, kTetrahedronEdges},
    {Shape::wedge6, Shape::wedge6, Cell::wedge, kWedgeCorners, {}},
    {Shape::wedge15, Shape::wedge6, Cell::wedge, kWedgeCorners, kWedgeEdges},
    {Shape::brick8, Shape::brick8, Cell::brick, kBrickCorners, {}},
    {Shape::brick20, Shape::brick8, Cell::brick, kBrickCorners, kBrickEdges},
}};

const Description& describe(Shape shape) { return kDescriptions[static_cast<std::size_t>(shape)]; }

bool hasMiddles(Shape shape) { return !describe(shape).edges.empty(); }

// Corners and middles of lines, quadrilaterals and bricks: the serendipity family (Zienkiewicz & Taylor, The Finite
// Element Method, 5th edition, volume 1, chapter 8). A direction that the cell lacks has the place 0 and adds a
// factor 1.
Functions serendipity(Shape shape, const Point& p) {
  const std::span<const Place> places = nodePlaces(shape);
  Functions functions;
  const int directions = cellOf(shape) == Cell::line ? 1 : cellOf(shape) == Cell::quadrilateral ? 2 : 3;
  for (std::size_t i = 0; i < places.size(); ++i) {
    Slope product{1.0, {}};
    Slope sum{};
    bool isMiddle = false;
    for (std::size_t k = 0; k < static_cast<std::size_t>(directions); ++k) {
      const double place = places[i][k];
      if (place == 0.0) {
        product = product * oneMinus(p[k] * p[k]);
        isMiddle = true;
      } else {
        product = 0.5 * (product * (place * p[k] + 1.0));
        sum = sum + place * p[k];
      }
    }
    functions[i] = hasMiddles(shape) && !isMiddle ? product * (sum + (1.0 - directions)) : product;
  }
  return functions;
}

// Triangles and tetrahedra in area and volume coordinates (Zienkiewicz & Taylor, chapter 8).
Functions simplex(Shape shape, const Point& p) {
  const bool isTriangle = cellOf(shape) == Cell::triangle;
  const std::array<Slope, 4> l = {isTriangle ? oneMinus(p[0] + p[1]) : oneMinus(p[0] + p[1] + p[2]), p[0], p[1], p[2]};
  Functions functions;
  const std::size_t corners = describe(shape).corners.size();
  for (std::size_t i = 0; i < corners; ++i) functions[i] = hasMiddles(shape) ? l[i] * (2.0 * l[i] + (-1.0)) : l[i];
  for (const Edge& edge : edgesOf(shape)) functions[edge.middle] = 4.0 * (l[edge.first] * l[edge.last]);
  return functions;
}

// Wedges: a triangle times a line (Zienkiewicz & Taylor, chapter 8).
Functions wedge(Shape shape, const Point& p) {
  const std::array<Slope, 3> l = {oneMinus(p[0] + p[1]), p[0], p[1]};
  const std::array<Slope, 2> end = {0.5 * oneMinus(p[2]), 0.5 * (p[2] + 1.0)};
  const Slope between = oneMinus(p[2] * p[2]);
  Functions functions;
  for (std::size_t i = 0; i < 6; ++i) {
    const Slope& corner = l[i % 3];
    const Slope linear = corner * end[i / 3];
    functions[i] = hasMiddles(shape) ? linear * (2.0 * corner + (-1.0)) - 0.5 * (corner * between) : linear;
  }
  for (const Edge& edge : edgesOf(shape)) {
    const bool isUpright = edge.last == edge.first + 3;
    functions[edge.middle] =
        isUpright ? l[edge.first] * between : 4.0 * (l[edge.first % 3] * l[edge.last % 3] * end[edge.first / 3]);
  }
  return functions;
}

std::vector<Place> placesOf(const Description& description) {
  std::vector<Place> places(description.corners.begin(), description.corners.end());
  places.resize(places.size() + description.edges.size());
  // The line of three nodes alone has a corner after its middle.
  if (description.cell == Cell::line && !description.edges.empty()) places[2] = places[1];
  for (const Edge& edge : description.edges) {
    for (std::size_t k = 0; k < 3; ++k) {
      places[edge.middle][k] = 0.5 * (places[edge.first][k] + places[edge.last][k]);
    }
  }
  return places;
}

// The rule of four points for polynomials of the second degree (Zienkiewicz & Taylor, chapter 9), which is
// all that a tetrahedron with straight edges needs.
std::vector<QuadraturePoint> tetrahedronRule() {
  const double near = (5 + 3 * std::sqrt(5.0)) / 20;
  const double far = (5 - std::sqrt(5.0)) / 20;
  const double weight = 1.0 / 24;
  return {
      {{far, far, far}, weight}, {{near, far, far}, weight}, {{far, near, far}, weight}, {{far, far, near}, weight}};
}

std::vector<QuadraturePoint> ruleFor(Shape shape) {
  return shape == Shape::tetrahedron4 ? tetrahedronRule() : quadrature(cellOf(shape), hasMiddles(shape) ? 4 : 3);
}

using Table = std::array<std::vector<ShapeValues>, kShapes>;

template <class ValuesOf>
Table tableOf(ValuesOf&& valuesOf) {
  Table table;
  for (const Description& description : kDescriptions) {
    table[static_cast<std::size_t>(description.shape)] = valuesOf(description.shape);
  }
  return table;
}

}  // namespace

Cell cellOf(Shape shape) { return describe(shape).cell; }

std::size_t nodesOf(Shape shape) { return describe(shape).corners.size() + describe(shape).edges.size(); }

Shape straightShape(Shape shape) { return describe(shape).straight; }

std::span<const Edge> edgesOf(Shape shape) { return describe(shape).edges; }

std::span<const std::array<double, 3>> nodePlaces(Shape shape) {
  static const std::array<std::vector<Place>, kShapes> places = [] {
    std::array<std::vector<Place>, kShapes> all;
    for (const Description& description : kDescriptions) {
      all[static_cast<std::size_t>(description.shape)] = placesOf(description);
    }
    return all;
  }();
  return places[static_cast<std::size_t>(shape)];
}

ShapeValues shapeValues(Shape shape, const std::array<double, 3>& at) {
  Point point;
  for (std::size_t k = 0; k < 3; ++k) {
    point[k].value = at[k];
    point[k].slope[k] = 1.0;
  }
  const Cell cell = cellOf(shape);
  const bool isSimplex = cell == Cell::triangle || cell == Cell::tetrahedron;
  const Functions functions = cell == Cell::wedge ? wedge(shape, point)
                              : isSimplex         ? simplex(shape, point)
                                                  : serendipity(shape, point);
  ShapeValues values;
  for (std::size_t i = 0; i < nodesOf(shape); ++i) {
    values.values[i] = functions[i].value;
    values.slopes[i] = functions[i].slope;
  }
  return values;
}

const std::vector<ShapeValues>& shapesAtPoints(Shape shape) {
  static const Table table = tableOf([](Shape each) {
    std::vector<ShapeValues> all;
    for (const QuadraturePoint& point : ruleFor(each)) {
      all.push_back(shapeValues(each, point.at));
      all.back().weight = point.weight;
    }
    return all;
  });
  return table[static_cast<std::size_t>(shape)];
}

const std::vector<ShapeValues>& shapesAtNodes(Shape shape) {
  static const Table table = tableOf([](Shape each) {
    std::vector<ShapeValues> all;
    for (const Place& place : nodePlaces(each)) all.push_back(shapeValues(each, place));
    return all;
  });
  return table[static_cast<std::size_t>(shape)];
}

}  // namespace elements
