#include "report/feature_edges.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace report {

namespace {

using Vector = std::array<double, 3>;

struct FaceEdge {
  std::int32_t low, high;  // corners
  std::int32_t middle;     // -1 for a straight edge
  std::uint32_t face;
  bool isReversed;  // the face goes from the higher to the lower one
};

Vector minus(std::span<const float> points, std::int32_t a, std::int32_t b) {
  Vector difference{};
  for (std::size_t c = 0; c < 3; ++c)
    difference[c] = static_cast<double>(points[3 * static_cast<std::size_t>(a) + c]) -
                    static_cast<double>(points[3 * static_cast<std::size_t>(b) + c]);
  return difference;
}

// Of a face: the cross product of its diagonals, or of two edges of a triangle.
Vector normalOf(const SkinFace& face, std::span<const float> points) {
  const bool isQuad = face.corners == 4;
  const Vector a = minus(points, face.nodes[isQuad ? 2 : 1], face.nodes[0]);
  const Vector b = minus(points, face.nodes[isQuad ? 3 : 2], face.nodes[isQuad ? 1 : 0]);
  Vector normal = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
  const double length = std::hypot(normal[0], normal[1], normal[2]);
  if (length > 0)
    for (double& number : normal) number /= length;
  return normal;
}

std::vector<FaceEdge> edgesOf(std::span<const SkinFace> faces) {
  std::vector<FaceEdge> edges;
  for (std::size_t f = 0; f < faces.size(); ++f) {
    const SkinFace& face = faces[f];
    for (std::size_t i = 0; i < face.corners; ++i) {
      const std::int32_t from = face.nodes[i];
      const std::int32_t to = face.nodes[(i + 1U) % face.corners];
      const std::int32_t middle = face.count > face.corners ? face.nodes[face.corners + i] : -1;
      edges.push_back({std::min(from, to), std::max(from, to), middle, static_cast<std::uint32_t>(f), from > to});
    }
  }
  return edges;
}

// Whether edges [first, end), which are of the same corners, are to be seen.
bool isSharp(std::span<const FaceEdge> edges, std::span<const Vector> normals, double leastCosine) {
  if (edges.size() != 2) return true;
  const Vector& a = normals[edges[0].face];
  const Vector& b = normals[edges[1].face];
  const double cosine = a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
  // Faces that are the same way round go along their edge in opposite directions.
  return (edges[0].isReversed != edges[1].isReversed ? cosine : -cosine) < leastCosine;
}

}  // namespace

std::vector<std::int32_t> featureEdges(std::span<const SkinFace> faces, std::span<const float> points, double degrees) {
  std::vector<Vector> normals;
  for (const SkinFace& face : faces) normals.push_back(normalOf(face, points));
  std::vector<FaceEdge> edges = edgesOf(faces);
  std::stable_sort(edges.begin(), edges.end(), [](const FaceEdge& a, const FaceEdge& b) {
    return a.low != b.low ? a.low < b.low : a.high < b.high;
  });
  const double leastCosine = std::cos(degrees * std::numbers::pi / 180.0);
  std::vector<std::int32_t> pairs;
  for (std::size_t first = 0, end = 0; first < edges.size(); first = end) {
    const FaceEdge& edge = edges[first];
    while (end < edges.size() && edges[end].low == edge.low && edges[end].high == edge.high) ++end;
    if (!isSharp(std::span(edges).subspan(first, end - first), normals, leastCosine)) continue;
    if (edge.middle < 0) {
      pairs.insert(pairs.end(), {edge.low, edge.high});
    } else {
      pairs.insert(pairs.end(), {std::min(edge.low, edge.middle), std::max(edge.low, edge.middle)});
      pairs.insert(pairs.end(), {std::min(edge.high, edge.middle), std::max(edge.high, edge.middle)});
    }
  }
  return pairs;
}

}  // namespace report
