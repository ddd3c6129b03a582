#include "importers/calculix/deck/deck_mesh.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "importers/calculix/deck/deck_sets.h"
#include "importers/calculix/deck/element_kinds.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

void DeckMeshReader::startElements(const Keyword& keyword, const LineReader& lines) {
  const auto type = keyword.value("TYPE");
  if (!type) lines.fail("*ELEMENT names no type");
  const std::string name = upperCased(storableText(*type));
  const auto known = std::find(mesh_.elementTypes.begin(), mesh_.elementTypes.end(), name);
  type_ = static_cast<int>(known - mesh_.elementTypes.begin());
  if (known == mesh_.elementTypes.end()) mesh_.elementTypes.push_back(name);
  const auto ofUser = nodesOfUserType_.find(name);
  nodesPerElement_ = ofUser != nodesOfUserType_.end() ? ofUser->second : elementKind(name).nodes;
  missingNodes_ = 0;
}

void DeckMeshReader::defineUserElement(const Keyword& keyword, const LineReader& lines) {
  const auto type = keyword.value("TYPE");
  const auto nodes = keyword.value("NODES");
  if (!type || !nodes) return;
  const std::optional<int> count = integerFrom(*nodes);
  if (!count || *count < 1) lines.fail(fmt::format("\"{}\" is not a number of nodes", storableText(*nodes)));
  nodesOfUserType_[upperCased(storableText(*type))] = *count;
}

int DeckMeshReader::takeNode(std::string_view line, const LineReader& lines) {
  const int label = labelFrom(line.substr(0, line.find(',')), lines);
  mesh_.nodeLabels.push_back(label);
  if (!withCoordinates_) return label;
  const std::vector<std::string_view> items = dataItems(line);
  elements::Vector3& at = mesh_.coordinates.emplace_back();
  for (std::size_t k = 1; k < std::min<std::size_t>(items.size(), 4); ++k) {
    if (!items[k].empty()) at[k - 1] = realFrom(items[k], lines);
  }
  return label;
}

// An element's nodes go on over lines until there are enough; of a type that is not known, while a line ends in a
// comma.
std::optional<int> DeckMeshReader::takeElement(std::string_view line, const LineReader& lines) {
  const std::vector<std::string_view> items = dataItems(line);
  std::size_t next = 0;
  std::optional<int> element;
  if (missingNodes_ == 0) {
    element = labelFrom(items[next++], lines);
    mesh_.elementLabels.push_back(*element);
    mesh_.typeOfElement.push_back(type_);
    mesh_.firstNode.push_back(mesh_.elementNodes.size());
    missingNodes_ = nodesPerElement_;
  }
  const auto nodes = static_cast<int>(items.size() - next);
  for (; next < items.size(); ++next)
    mesh_.elementNodes.push_back(items[next].empty() ? 0 : labelFrom(items[next], lines));
  if (nodesPerElement_ > 0) {
    missingNodes_ = std::max(0, missingNodes_ - nodes);
  } else {
    missingNodes_ = line.back() == ',' ? 1 : 0;
  }
  return element;
}

}  // namespace importers::calculix
