// Gauss quadrature over the reference cells of finite elements.
#pragma once

#include <array>
#include <vector>

namespace elements {

// Lines, quadrilaterals and bricks run from -1 to 1 in each direction. Triangles have the corners (0,0), (1,0), (0,1),
// tetrahedra likewise; a wedge is a triangle in the first two directions and a line in the third.
enum class Cell { line, triangle, quadrilateral, tetrahedron, wedge, brick };

// The weights of a rule add up to the size of the cell. Directions that a cell does not have are 0.
struct QuadraturePoint {
  std::array<double, 3> at{};
  double weight = 0.0;
};

// The rule of `n` points between -1 and 1, exact for polynomials up to the degree 2n - 1. `n` is 1 or more.
std::vector<QuadraturePoint> gaussLegendre(int n);

// The product rule of `n` points in every direction. Lines, quadrilaterals and bricks are exact for the degree 2n - 1
// in each direction; triangles and tetrahedra, whose corners are made by collapsing edges, for the total degrees 2n - 2
// and 2n - 3.
std::vector<QuadraturePoint> quadrature(Cell cell, int n);

}  // namespace elements
