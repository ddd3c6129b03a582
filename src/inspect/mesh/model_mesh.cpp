#include "inspect/mesh/model_mesh.h"

#include <fmt/format.h>

#include <algorithm>

#include "odbstore/database_file.h"
#include "odbstore/names.h"
#include "odbstore/reader.h"

namespace inspect {

namespace {

std::string objectOf(const std::string& instance, const std::string& type) {
  return fmt::format("/assembly/instances/{}/mesh/elements/{}", odbstore::linkFromName(instance),
                     odbstore::linkFromName(type));
}

// Puts the points of an element's nodes behind those that are there.
class Connections {
 public:
  Connections(const MeshPart& part, ModelMesh& mesh) : part_(part), mesh_(mesh) {}

  // Returns false where a node is not there, which is left in `missing`.
  bool add(std::span<const int> nodes, const CellShape& shape, int& missing) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      const int node = nodes[shape.order.empty() ? i : shape.order[i]];
      const int place = part_.nodes.placeOf(node);
      if (place < 0) {
        missing = node;
        return false;
      }
      mesh_.connectivity.push_back(static_cast<std::int64_t>(part_.firstPoint) + place);
    }
    return true;
  }

 private:
  const MeshPart& part_;
  ModelMesh& mesh_;
};

void addGroup(const std::string& file, const odbstore::Mesh::Elements& elements, std::size_t partPlace,
              ModelMesh& mesh) {
  if (elements.labels.empty()) return;
  const MeshPart& part = mesh.parts[partPlace];
  const std::size_t nodes = elements.connectivity.size() / elements.labels.size();
  if (nodes == 0)
    throw odbstore::StoreError(file, objectOf(part.instance, elements.type), "its elements have no nodes");
  CellGroup group = {elements.type,
                     partPlace,
                     mesh.elementLabels.size(),
                     elements.labels.size(),
                     nodes,
                     mesh.connectivity.size(),
                     cellShape(elements.type, nodes)};
  Connections connections(part, mesh);
  mesh.connectivity.reserve(mesh.connectivity.size() + elements.connectivity.size());
  for (std::size_t i = 0; i < elements.labels.size(); ++i) {
    int missing = 0;
    if (connections.add(std::span(elements.connectivity).subspan(i * nodes, nodes), group.shape, missing)) continue;
    throw odbstore::StoreError(
        file, objectOf(part.instance, elements.type),
        fmt::format("element {} has the node {}, which is not there", elements.labels[i], missing));
  }
  mesh.elementLabels.insert(mesh.elementLabels.end(), elements.labels.begin(), elements.labels.end());
  mesh.groups.push_back(std::move(group));
}

void addPart(const std::string& file, const std::string& instance, const odbstore::Mesh& stored, ModelMesh& mesh) {
  const std::size_t place = mesh.parts.size();
  mesh.parts.push_back({instance,
                        mesh.nodeLabels.size(),
                        stored.nodes.size(),
                        mesh.elementLabels.size(),
                        0,
                        base::LabelIndex(stored.nodes),
                        {}});
  mesh.nodeLabels.insert(mesh.nodeLabels.end(), stored.nodes.begin(), stored.nodes.end());
  mesh.coordinates.insert(mesh.coordinates.end(), stored.coordinates.begin(), stored.coordinates.end());
  for (const odbstore::Mesh::Elements& elements : stored.elements) addGroup(file, elements, place, mesh);
  MeshPart& part = mesh.parts[place];
  part.cells = mesh.elementLabels.size() - part.firstCell;
  part.elements = base::LabelIndex(std::span(mesh.elementLabels).subspan(part.firstCell));
}

}  // namespace

const MeshPart* ModelMesh::partOf(const std::string& instance) const {
  const auto found =
      std::find_if(parts.begin(), parts.end(), [&](const MeshPart& part) { return part.instance == instance; });
  return found == parts.end() ? nullptr : &*found;
}

std::int64_t ModelMesh::pointOf(const std::string& instance, int node) const {
  const MeshPart* const part = partOf(instance);
  const int place = part == nullptr ? -1 : part->nodes.placeOf(node);
  return place < 0 ? -1 : static_cast<std::int64_t>(part->firstPoint) + place;
}

std::int64_t ModelMesh::cellOf(const std::string& instance, int element) const {
  const MeshPart* const part = partOf(instance);
  const int place = part == nullptr ? -1 : part->elements.placeOf(element);
  return place < 0 ? -1 : static_cast<std::int64_t>(part->firstCell) + place;
}

const CellGroup& ModelMesh::groupOf(std::size_t cell) const {
  const auto behind = std::upper_bound(groups.begin(), groups.end(), cell,
                                       [](std::size_t c, const CellGroup& group) { return c < group.firstCell; });
  return *(behind - 1);
}

std::span<const std::int64_t> ModelMesh::pointsOf(std::size_t cell) const {
  const CellGroup& group = groupOf(cell);
  return std::span(connectivity).subspan(group.firstConnection + (cell - group.firstCell) * group.nodes, group.nodes);
}

ModelMesh readMesh(const odbstore::Reader& reader) {
  ModelMesh mesh;
  for (const odbstore::InstanceInfo& instance : reader.instances()) {
    const std::optional<odbstore::Mesh> stored = reader.mesh(instance.name);
    if (stored) addPart(reader.file()->name(), instance.name, *stored, mesh);
  }
  return mesh;
}

}  // namespace inspect
