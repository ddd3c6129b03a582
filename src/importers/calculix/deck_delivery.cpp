#include "importers/calculix/deck_delivery.h"

#include <algorithm>
#include <map>

#include "importers/calculix/deck/element_kinds.h"
#include "importers/input/last_places.h"

namespace importers::calculix {

namespace {

// The elements of a deck by type, each once.
std::map<std::string, ElementGroup> groupsOf(const DeckMesh& mesh) {
  const LastPlaces last(mesh.elementLabels);
  std::map<std::string, ElementGroup> groups;
  for (std::size_t i = 0; i < mesh.elementLabels.size(); ++i) {
    if (last.placeOf(mesh.elementLabels[i]) != static_cast<int>(i)) continue;
    const std::string& type = mesh.elementTypes[static_cast<std::size_t>(mesh.typeOfElement[i])];
    const std::span<const int> nodes = mesh.nodesOf(i);
    ElementGroup& group = groups[type];
    if (group.labels.empty()) {
      group.type = type;
      group.nodesPerElement = static_cast<int>(nodes.size());
      group.hasTensors = elementKind(type).hasTensors();
    }
    // An element of a type that the user may define anew in the middle of a deck.
    if (static_cast<std::size_t>(group.nodesPerElement) != nodes.size()) continue;
    group.labels.push_back(mesh.elementLabels[i]);
    group.connectivity.insert(group.connectivity.end(), nodes.begin(), nodes.end());
  }
  return groups;
}

}  // namespace

std::vector<int> nodesOfDeck(const DeckMesh& mesh) {
  const LastPlaces last(mesh.nodeLabels);
  std::vector<int> labels;
  for (std::size_t i = 0; i < mesh.nodeLabels.size(); ++i) {
    if (last.placeOf(mesh.nodeLabels[i]) == static_cast<int>(i)) labels.push_back(mesh.nodeLabels[i]);
  }
  return labels;
}

FrdElements elementsOfDeck(const DeckMesh& mesh) {
  FrdElements elements;
  for (auto& [type, group] : groupsOf(mesh)) {
    elements.groups.push_back({0, group.nodesPerElement, group.labels, group.connectivity});
  }
  return elements;
}

void deliverDeckMesh(const DeckMesh& mesh, const std::string& path, Sink& sink) {
  const LastPlaces last(mesh.nodeLabels);
  const std::vector<int> labels = nodesOfDeck(mesh);
  std::vector<double> coordinates;
  coordinates.reserve(3 * labels.size());
  for (const int label : labels) {
    const elements::Vector3& at = mesh.coordinates[static_cast<std::size_t>(last.placeOf(label))];
    coordinates.insert(coordinates.end(), at.begin(), at.end());
  }
  sink.nodes(labels, coordinates, {path, 0});
  for (const auto& [type, group] : groupsOf(mesh)) sink.elements(group, {path, 0});
}

}  // namespace importers::calculix
