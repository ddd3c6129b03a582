#include "report/page_model.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace report {

namespace {

std::vector<std::int32_t> labelsAt(const std::vector<int>& labels, const std::vector<std::int32_t>& places) {
  std::vector<std::int32_t> found;
  for (const std::int32_t place : places) found.push_back(labels[static_cast<std::size_t>(place)]);
  return found;
}

// Of each place the number of the part that it belongs to, by the parts' first ones, ascending.
std::vector<std::int32_t> partsAt(const std::vector<std::int32_t>& places, const std::vector<std::size_t>& firsts) {
  std::vector<std::int32_t> parts;
  for (const std::int32_t place : places) {
    const auto after = std::upper_bound(firsts.begin(), firsts.end(), static_cast<std::size_t>(place));
    parts.push_back(static_cast<std::int32_t>(after - firsts.begin()) - 1);
  }
  return parts;
}

Json facesPart(const Surface::Faces& faces, PageData& data) {
  return {{"corners", faces.corners},
          {"nodes", faces.nodes},
          {"inner", faces.isInner},
          {"vertices", data.add(pack(std::span<const std::int32_t>(faces.vertices), faces.nodes))},
          {"elements", data.add(pack(std::span<const std::int32_t>(faces.elements), 1))}};
}

void addInstances(const inspect::ModelMesh& mesh, const Surface& surface, PageData& data, Json& part) {
  std::vector<std::size_t> points;
  std::vector<std::size_t> cells;
  Json& names = part["instances"] = Json::array();
  for (const inspect::MeshPart& instance : mesh.parts) {
    names.push_back(instance.instance);
    points.push_back(instance.firstPoint);
    cells.push_back(instance.firstCell);
  }
  if (mesh.parts.size() < 2) return;
  part["nodeInstances"] = data.add(pack(std::span<const std::int32_t>(partsAt(surface.points, points)), 1));
  part["elementInstances"] = data.add(pack(std::span<const std::int32_t>(partsAt(surface.cells, cells)), 1));
}

// Vertices or elements that can be seen of a set, ascending.
std::vector<std::int32_t> visible(const MeshSet& set, const Surface& surface) {
  const std::vector<std::int32_t>& places = set.isOfElements ? surface.elementOf : surface.vertexOf;
  std::vector<std::int32_t> found;
  for (const std::int32_t member : set.members)
    if (places[static_cast<std::size_t>(member)] >= 0) found.push_back(places[static_cast<std::size_t>(member)]);
  std::sort(found.begin(), found.end());
  return found;
}

}  // namespace

Json modelPart(const inspect::ModelMesh& mesh, const Surface& surface, PageData& data) {
  Json part = {{"nodes", mesh.nodeLabels.size()},
               {"cells", mesh.elementLabels.size()},
               {"triangles", surface.triangles()},
               {"vertices", surface.points.size()},
               {"elements", surface.cells.size()}};
  part["coordinates"] = data.add(pack(std::span<const float>(surface.coordinates), 3));
  part["nodeLabels"] = data.add(pack(std::span<const std::int32_t>(labelsAt(mesh.nodeLabels, surface.points)), 1));
  part["elementLabels"] = data.add(pack(std::span<const std::int32_t>(labelsAt(mesh.elementLabels, surface.cells)), 1));
  addInstances(mesh, surface, data, part);
  for (const Surface::Faces& faces : surface.faces) part["faces"].push_back(facesPart(faces, data));
  part["edges"] = data.add(pack(std::span<const std::int32_t>(surface.edges), 2));
  return part;
}

Json setsPart(const std::vector<MeshSet>& sets, const Surface& surface, std::size_t most, PageData& data,
              std::size_t& leftOut) {
  Json part = Json::array();
  std::size_t used = 0;
  for (const MeshSet& set : sets) {
    Json& entry = part.emplace_back(
        Json{{"name", set.name}, {"kind", set.isOfElements ? "element" : "node"}, {"size", set.members.size()}});
    const std::vector<std::int32_t> members = visible(set, surface);
    if (members.empty()) continue;
    const PackedArray packed = pack(std::span<const std::int32_t>(members), 1);
    used += packed.text.size();
    if (used > most || !data.hasRoomFor(packed.text.size())) {
      ++leftOut;
      continue;
    }
    entry["members"] = data.add(packed);
  }
  return part;
}

}  // namespace report
