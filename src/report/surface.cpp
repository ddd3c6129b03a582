#include "report/surface.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "report/feature_edges.h"
#include "report/morton.h"
#include "report/packing.h"

namespace report {

namespace {

// Flat shells of solids meet at right angles, facets of round holes at less than this.
constexpr double kSharpDegrees = 35.0;

std::vector<SkinFace> allFaces(Skin& skin) {
  if (skin.inner.size() > skin.outer.size()) skin.inner.clear();
  std::vector<SkinFace> faces = skin.outer;
  faces.insert(faces.end(), skin.inner.begin(), skin.inner.end());
  faces.insert(faces.end(), skin.lines.begin(), skin.lines.end());
  return faces;
}

std::vector<float> coordinatesOf(const inspect::ModelMesh& mesh, std::span<const std::int32_t> points) {
  std::vector<float> coordinates;
  coordinates.reserve(3 * points.size());
  for (const std::int32_t point : points) {
    for (std::size_t c = 0; c < 3; ++c)
      coordinates.push_back(static_cast<float>(mesh.coordinates[3 * static_cast<std::size_t>(point) + c]));
  }
  return coordinates;
}

// Meshes of a block's pattern come in a good order; others are better along Morton's curve. Whichever packs smaller.
void orderVertices(Surface& surface, const inspect::ModelMesh& mesh) {
  std::vector<std::int32_t> points;
  for (const std::uint32_t place : mortonOrder(coordinatesOf(mesh, surface.points)))
    points.push_back(surface.points[place]);
  std::vector<float> coordinates = coordinatesOf(mesh, points);
  surface.coordinates = coordinatesOf(mesh, surface.points);
  if (pack(coordinates, 3).text.size() >= pack(surface.coordinates, 3).text.size()) return;
  surface.points = std::move(points);
  surface.coordinates = std::move(coordinates);
}

void takeVertices(Surface& surface, const inspect::ModelMesh& mesh, std::span<const SkinFace> faces) {
  std::vector<bool> isUsed(mesh.nodeLabels.size());
  for (const SkinFace& face : faces) {
    for (std::size_t i = 0; i < face.count; ++i) isUsed[static_cast<std::size_t>(face.nodes[i])] = true;
  }
  for (std::size_t point = 0; point < isUsed.size(); ++point)
    if (isUsed[point]) surface.points.push_back(static_cast<std::int32_t>(point));
  orderVertices(surface, mesh);
  surface.vertexOf.assign(isUsed.size(), -1);
  for (std::size_t v = 0; v < surface.points.size(); ++v)
    surface.vertexOf[static_cast<std::size_t>(surface.points[v])] = static_cast<std::int32_t>(v);
}

// The same face, its nodes by their vertices and starting at the lowest corner.
SkinFace inVertices(const SkinFace& face, const Surface& surface) {
  SkinFace made = face;
  for (std::size_t i = 0; i < face.count; ++i)
    made.nodes[i] = surface.vertexOf[static_cast<std::size_t>(face.nodes[i])];
  if (face.corners == 2) return made;
  const auto corners = made.nodes.begin() + face.corners;
  const auto turn = std::min_element(made.nodes.begin(), corners) - made.nodes.begin();
  std::rotate(made.nodes.begin(), made.nodes.begin() + turn, corners);
  if (face.count > face.corners) std::rotate(corners, corners + turn, corners + face.corners);
  return made;
}

std::int32_t elementOf(Surface& surface, std::uint32_t cell) {
  std::int32_t& element = surface.elementOf[cell];
  if (element < 0) {
    element = static_cast<std::int32_t>(surface.cells.size());
    surface.cells.push_back(static_cast<std::int32_t>(cell));
  }
  return element;
}

void takeFaces(Surface& surface, std::span<const SkinFace> faces, bool isInner) {
  std::vector<SkinFace> made;
  for (const SkinFace& face : faces) made.push_back(inVertices(face, surface));
  std::sort(made.begin(), made.end(), [](const SkinFace& a, const SkinFace& b) {
    return std::tie(a.corners, a.count, a.nodes, a.cell) < std::tie(b.corners, b.count, b.nodes, b.cell);
  });
  for (const SkinFace& face : made) {
    const bool isFirst = surface.faces.empty() || surface.faces.back().corners != face.corners ||
                         surface.faces.back().nodes != face.count || surface.faces.back().isInner != isInner;
    if (isFirst) surface.faces.push_back({face.corners, face.count, isInner, {}, {}});
    Surface::Faces& kind = surface.faces.back();
    kind.vertices.insert(kind.vertices.end(), face.nodes.begin(), face.nodes.begin() + face.count);
    kind.elements.push_back(elementOf(surface, face.cell));
  }
}

void takeEdges(Surface& surface, std::span<const SkinFace> outer) {
  std::vector<SkinFace> faces;
  for (const SkinFace& face : outer) faces.push_back(inVertices(face, surface));
  surface.edges = featureEdges(faces, surface.coordinates, kSharpDegrees);
}

}  // namespace

std::size_t Surface::triangles() const {
  std::size_t count = 0;
  for (const Faces& kind : faces) {
    if (kind.corners > 2 && !kind.isInner) count += kind.elements.size() * (kind.nodes - 2U);
  }
  return count;
}

std::vector<std::uint32_t> groupsOf(std::size_t cells, std::span<const MeshSet> sets) {
  std::vector<std::uint32_t> groups(cells);
  std::uint32_t next = 1;
  for (const MeshSet& set : sets) {
    if (!set.isOfElements) continue;
    std::map<std::uint32_t, std::uint32_t> split;  // a group, and that of its cells which are in the set
    for (const std::int32_t cell : set.members) {
      const auto [entry, isNew] = split.try_emplace(groups[static_cast<std::size_t>(cell)], next);
      if (isNew) ++next;
      groups[static_cast<std::size_t>(cell)] = entry->second;
    }
  }
  return groups;
}

Surface surfaceOf(const inspect::ModelMesh& mesh, std::span<const MeshSet> sets) {
  Skin skin = skinOf(mesh, groupsOf(mesh.elementLabels.size(), sets));
  Surface surface;
  takeVertices(surface, mesh, allFaces(skin));
  surface.elementOf.assign(mesh.elementLabels.size(), -1);
  takeFaces(surface, skin.outer, false);
  takeFaces(surface, skin.inner, true);
  takeFaces(surface, skin.lines, false);
  takeEdges(surface, skin.outer);
  return surface;
}

}  // namespace report
