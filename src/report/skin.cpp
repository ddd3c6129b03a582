#include "report/skin.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "report/cell_faces.h"

namespace report {

namespace {

// A face of a solid cell by its corners, ascending; -1 first where there are three.
struct SolidFace {
  std::array<std::int32_t, 4> corners;
  std::uint32_t cell;
  std::uint32_t face;
};

struct Walk {
  const inspect::ModelMesh& mesh;
  std::span<const std::uint32_t> groups;
  std::vector<SolidFace> solidFaces;
  Skin skin;
};

SkinFace faceOf(const inspect::ModelMesh& mesh, std::size_t cell, const CellFace& face) {
  const std::span<const std::int64_t> points = mesh.pointsOf(cell);
  SkinFace made;
  made.cell = static_cast<std::uint32_t>(cell);
  made.corners = face.corners;
  made.count = face.nodes;
  for (std::size_t i = 0; i < face.nodes; ++i) made.nodes[i] = static_cast<std::int32_t>(points[face.places[i]]);
  return made;
}

constexpr CellFace kStraightLine = {{0, 1}, 2, 2};
constexpr CellFace kCurvedLine = {{0, 1, 2}, 2, 3};

void addSolid(Walk& walk, std::size_t cell, std::span<const CellFace> faces) {
  const std::span<const std::int64_t> points = walk.mesh.pointsOf(cell);
  for (std::size_t f = 0; f < faces.size(); ++f) {
    SolidFace solidFace{{-1, -1, -1, -1}, static_cast<std::uint32_t>(cell), static_cast<std::uint32_t>(f)};
    for (std::size_t i = 0; i < faces[f].corners; ++i)
      solidFace.corners[i] = static_cast<std::int32_t>(points[faces[f].places[i]]);
    std::sort(solidFace.corners.begin(), solidFace.corners.end());
    walk.solidFaces.push_back(solidFace);
  }
}

void addGroup(Walk& walk, const inspect::CellGroup& group) {
  const inspect::CellType type = group.shape.type;
  const std::span<const CellFace> faces = facesOf(type);
  for (std::size_t cell = group.firstCell; cell < group.firstCell + group.cells; ++cell) {
    if (isSolid(type)) {
      addSolid(walk, cell, faces);
    } else if (isLine(type)) {
      const CellFace& line = type == inspect::CellType::line ? kStraightLine : kCurvedLine;
      walk.skin.lines.push_back(faceOf(walk.mesh, cell, line));
    } else if (!faces.empty()) {
      walk.skin.outer.push_back(faceOf(walk.mesh, cell, faces.front()));
    }
  }
}

SkinFace faceOf(const Walk& walk, const SolidFace& solidFace) {
  const inspect::CellType type = walk.mesh.groupOf(solidFace.cell).shape.type;
  return faceOf(walk.mesh, solidFace.cell, facesOf(type)[solidFace.face]);
}

// Candidates that have the same corners.
void takeShared(Walk& walk, std::span<const SolidFace> sharers) {
  if (sharers.size() == 1) {
    walk.skin.outer.push_back(faceOf(walk, sharers.front()));
    return;
  }
  if (walk.groups.empty()) return;
  const std::uint32_t group = walk.groups[sharers.front().cell];
  const auto isOther = [&](const SolidFace& sharer) { return walk.groups[sharer.cell] != group; };
  if (std::none_of(sharers.begin(), sharers.end(), isOther)) return;
  for (const SolidFace& sharer : sharers) walk.skin.inner.push_back(faceOf(walk, sharer));
}

void sortByCell(std::vector<SkinFace>& faces) {
  std::stable_sort(faces.begin(), faces.end(), [](const SkinFace& a, const SkinFace& b) { return a.cell < b.cell; });
}

}  // namespace

Skin skinOf(const inspect::ModelMesh& mesh, std::span<const std::uint32_t> groups) {
  if (mesh.nodeLabels.size() > std::numeric_limits<std::int32_t>::max()) throw std::length_error("too many nodes");
  Walk walk{mesh, groups, {}, {}};
  for (const inspect::CellGroup& group : mesh.groups) addGroup(walk, group);
  std::vector<SolidFace>& all = walk.solidFaces;
  std::sort(all.begin(), all.end(), [](const SolidFace& a, const SolidFace& b) {
    return a.corners != b.corners ? a.corners < b.corners : a.cell < b.cell;
  });
  for (std::size_t first = 0, end = 0; first < all.size(); first = end) {
    while (end < all.size() && all[end].corners == all[first].corners) ++end;
    takeShared(walk, std::span(all).subspan(first, end - first));
  }
  sortByCell(walk.skin.outer);
  sortByCell(walk.skin.inner);
  return walk.skin;
}

}  // namespace report
