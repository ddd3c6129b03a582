// Meshes of a few elements, made by hand.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "inspect/mesh/model_mesh.h"

namespace meshes {

// Points of one part, with cells of several types. Labels are places counted from 1.
class MeshMaker {
 public:
  explicit MeshMaker(std::vector<std::array<double, 3>> points) {
    for (const auto& point : points) mesh_.coordinates.insert(mesh_.coordinates.end(), point.begin(), point.end());
    for (std::size_t i = 0; i < points.size(); ++i) mesh_.nodeLabels.push_back(static_cast<int>(i) + 1);
  }

  // Cells of one type; nodes are places of points.
  MeshMaker& add(inspect::CellType type, const std::vector<std::vector<std::int64_t>>& cells) {
    inspect::CellGroup group;
    group.firstCell = mesh_.elementLabels.size();
    group.cells = cells.size();
    group.nodes = cells.front().size();
    group.firstConnection = mesh_.connectivity.size();
    group.shape.type = type;
    for (const std::vector<std::int64_t>& cell : cells) {
      mesh_.connectivity.insert(mesh_.connectivity.end(), cell.begin(), cell.end());
      mesh_.elementLabels.push_back(static_cast<int>(mesh_.elementLabels.size()) + 1);
    }
    mesh_.groups.push_back(group);
    return *this;
  }

  inspect::ModelMesh make() {
    inspect::MeshPart part;
    part.instance = "I";
    part.points = mesh_.nodeLabels.size();
    part.cells = mesh_.elementLabels.size();
    part.nodes = base::LabelIndex(mesh_.nodeLabels);
    part.elements = base::LabelIndex(mesh_.elementLabels);
    mesh_.parts.push_back(std::move(part));
    return mesh_;
  }

 private:
  inspect::ModelMesh mesh_;
};

// A row of unit cubes along x: point 4 i + k is corner k of the square at x = i.
inline std::vector<std::array<double, 3>> squaresAlongX(int count) {
  std::vector<std::array<double, 3>> points;
  for (int i = 0; i < count; ++i) {
    const double x = i;
    points.insert(points.end(), {{x, 0, 0}, {x, 1, 0}, {x, 1, 1}, {x, 0, 1}});
  }
  return points;
}

inline std::vector<std::int64_t> cube(std::int64_t first) {
  return {first, first + 1, first + 2, first + 3, first + 4, first + 5, first + 6, first + 7};
}

}  // namespace meshes
