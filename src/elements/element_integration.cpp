#include "elements/element_integration.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "elements/quadrature.h"

namespace elements {

namespace {

// A middle node counts as being in the middle of its edge within this part of the edge's length.
constexpr double kStraight = 1e-6;
// The sine of an angle that a direction has with an axis when it lies along it.
constexpr double kAlong = 1e-6;

using NodeVectors = std::array<Vector3, kMostNodes>;

Vector3 interpolated(const ShapeValues& shape, std::span<const Vector3> nodes) {
  Vector3 sum{};
  for (std::size_t i = 0; i < nodes.size(); ++i) sum = sum + shape.values[i] * nodes[i];
  return sum;
}

Vector3 derivative(const ShapeValues& shape, std::span<const Vector3> nodes, std::size_t direction) {
  Vector3 sum{};
  for (std::size_t i = 0; i < nodes.size(); ++i) sum = sum + shape.slopes[i][direction] * nodes[i];
  return sum;
}

bool isStraight(Shape shape, std::span<const Vector3> nodes) {
  const std::span<const Edge> edges = edgesOf(shape);
  return std::all_of(edges.begin(), edges.end(), [&](const Edge& edge) {
    const Vector3 chord = nodes[edge.last] - nodes[edge.first];
    const Vector3 off = nodes[edge.middle] - 0.5 * (nodes[edge.first] + nodes[edge.last]);
    return dot(off, off) <= kStraight * kStraight * dot(chord, chord);
  });
}

Vector3 normalAt(const ShapeValues& shape, std::span<const Vector3> nodes) {
  return unit(cross(derivative(shape, nodes, 0), derivative(shape, nodes, 1)));
}

// At the nodes; where sides of the element fall together at one, that of all of it.
NodeVectors normalsOf(Shape shape, std::span<const Vector3> nodes) {
  NodeVectors normals;
  for (std::size_t i = 0; i < nodes.size(); ++i) normals[i] = normalAt(shapesAtNodes(shape)[i], nodes);
  Vector3 sum{};
  for (std::size_t i = 0; i < nodes.size(); ++i) sum = sum + normals[i];
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (dot(normals[i], normals[i]) == 0.0) normals[i] = unit(sum);
  }
  return normals;
}

// The nodes moved by so much along directions of theirs.
NodeVectors moved(std::span<const Vector3> nodes, const NodeVectors& directions, double by) {
  NodeVectors places;
  for (std::size_t i = 0; i < nodes.size(); ++i) places[i] = nodes[i] + by * directions[i];
  return places;
}

void addLayer(Moments& moments, Shape shape, std::span<const Vector3> nodes, const NodeVectors& normals,
              const Layer& layer) {
  static const std::vector<QuadraturePoint> throughThickness = gaussLegendre(3);
  const double half = (layer.top - layer.bottom) / 2;
  for (const QuadraturePoint& height : throughThickness) {
    const NodeVectors surface = moved(nodes, normals, (layer.top + layer.bottom) / 2 + half * height.at[0]);
    const std::span<const Vector3> places(surface.data(), nodes.size());
    for (const ShapeValues& point : shapesAtPoints(shape)) {
      const Vector3 across = interpolated(point, std::span(normals).first(nodes.size()));
      const double volume = determinant(derivative(point, places, 0), derivative(point, places, 1), across);
      moments.add(layer.density * std::abs(volume) * point.weight * height.weight * half, interpolated(point, places));
    }
  }
}

// A direction normal to the axis, as near to the wanted one as can be.
Vector3 normalTo(const Vector3& axis, const Vector3& wanted) {
  const Vector3 normal = wanted - dot(wanted, axis) * axis;
  if (length(normal) > kAlong) return unit(normal);
  const Vector3 other = std::abs(axis[0]) < 0.7 ? Vector3{1, 0, 0} : Vector3{0, 1, 0};
  return unit(other - dot(other, axis) * axis);
}

}  // namespace

void addSolid(Moments& moments, Shape shape, std::span<const Vector3> nodes, double density) {
  if (straightShape(shape) != shape && isStraight(shape, nodes)) {
    shape = straightShape(shape);
    nodes = nodes.first(nodesOf(shape));
  }
  for (const ShapeValues& point : shapesAtPoints(shape)) {
    const double volume =
        determinant(derivative(point, nodes, 0), derivative(point, nodes, 1), derivative(point, nodes, 2));
    moments.add(density * std::abs(volume) * point.weight, interpolated(point, nodes));
  }
}

void addShell(Moments& moments, Shape shape, std::span<const Vector3> nodes, std::span<const Layer> layers,
              Thicknesses thicknesses) {
  NodeVectors normals = normalsOf(shape, nodes);
  for (std::size_t i = 0; i < thicknesses.size(); ++i) normals[i] = thicknesses[i][0] * normals[i];
  for (const Layer& layer : layers) addLayer(moments, shape, nodes, normals, layer);
}

void addPlane(Moments& moments, Shape shape, std::span<const Vector3> nodes, double thickness, double density) {
  NodeVectors normals;
  normals.fill({0, 0, 1});
  addLayer(moments, shape, nodes, normals, {-thickness / 2, thickness / 2, density});
}

void addAxisymmetric(Moments& moments, Shape shape, std::span<const Vector3> nodes, double density) {
  for (const ShapeValues& point : shapesAtPoints(shape)) {
    const Vector3 at = interpolated(point, nodes);
    const Vector3 area = cross(derivative(point, nodes, 0), derivative(point, nodes, 1));
    const double mass = density * 2 * std::numbers::pi * at[0] * std::abs(area[2]) * point.weight;
    // A ring of the radius r has m r²/2 in each direction of its plane.
    const double own = mass * at[0] * at[0] / 2;
    moments.add(mass, {0, at[1], 0}, {own, 0, own, 0, 0, 0});
  }
}

void addBeam(Moments& moments, Shape shape, std::span<const Vector3> nodes, const CrossSection& section,
             const Vector3& direction, double density, Thicknesses thicknesses) {
  NodeVectors first;
  NodeVectors second;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const Vector3 axis = unit(derivative(shapesAtNodes(shape)[i], nodes, 0));
    first[i] = normalTo(axis, unit(direction));
    second[i] = cross(axis, first[i]);
    if (thicknesses.empty()) continue;
    first[i] = thicknesses[i][0] * first[i];
    second[i] = thicknesses[i][1] * second[i];
  }
  for (const SectionPoint& fibre : section) {
    const NodeVectors line = moved(moved(nodes, first, fibre.n1), second, fibre.n2);
    const std::span<const Vector3> places(line.data(), nodes.size());
    for (const ShapeValues& point : shapesAtPoints(shape)) {
      const Vector3 n1 = interpolated(point, std::span(first).first(nodes.size()));
      const Vector3 n2 = interpolated(point, std::span(second).first(nodes.size()));
      const double volume = determinant(derivative(point, places, 0), n1, n2);
      moments.add(density * std::abs(volume) * point.weight * fibre.area, interpolated(point, places));
    }
  }
}

}  // namespace elements
