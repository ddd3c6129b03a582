// The mesh of a database as pictures need it: points and cells of all instances, one after the other, numbered from 0.
//
//     const inspect::ModelMesh mesh = inspect::readMesh(*reader);
//     const std::int64_t point = mesh.pointOf("PART-1-1", 17);  // of node 17
//     const double x = mesh.coordinates[3 * point];
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/label_index.h"
#include "inspect/mesh/cell_shapes.h"

namespace odbstore {
class Reader;
}

namespace inspect {

// What one instance has of the mesh: its points and cells lie together.
struct MeshPart {
  std::string instance;
  std::size_t firstPoint = 0;
  std::size_t points = 0;
  std::size_t firstCell = 0;
  std::size_t cells = 0;
  base::LabelIndex nodes;     // label of a node -> its point, counted from firstPoint
  base::LabelIndex elements;  // label of an element -> its cell, counted from firstCell
};

// Elements of one type in one instance: their cells lie together and have the same shape.
struct CellGroup {
  std::string elementType;
  std::size_t part = 0;  // in ModelMesh::parts
  std::size_t firstCell = 0;
  std::size_t cells = 0;
  std::size_t nodes = 0;            // of each
  std::size_t firstConnection = 0;  // in ModelMesh::connectivity; cell after cell
  CellShape shape;
};

struct ModelMesh {
  std::vector<MeshPart> parts;      // instances by name
  std::vector<int> nodeLabels;      // [points]
  std::vector<double> coordinates;  // [points, 3]
  std::vector<CellGroup> groups;
  std::vector<int> elementLabels;          // [cells]
  std::vector<std::int64_t> connectivity;  // points, the nodes of a cell in the order of VTK
  bool isEmpty() const { return nodeLabels.empty(); }

  // Null for an instance without a mesh, and one that is not there.
  const MeshPart* partOf(const std::string& instance) const;
  // -1 where there is no such node, likewise.
  std::int64_t pointOf(const std::string& instance, int node) const;
  std::int64_t cellOf(const std::string& instance, int element) const;
  // The group of a cell.
  const CellGroup& groupOf(std::size_t cell) const;
  // The points of a cell in the order of VTK.
  std::span<const std::int64_t> pointsOf(std::size_t cell) const;
};

// Empty where no instance has a mesh. Throws StoreError, also where an element has a node that is not there.
ModelMesh readMesh(const odbstore::Reader& reader);

}  // namespace inspect
