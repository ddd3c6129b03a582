#include "importers/run/element_groups.h"

#include <fmt/core.h>

#include <algorithm>

namespace importers {

ElementGroup& ElementGroups::groupOf(const std::string& type, int nodesPerElement, bool hasTensors,
                                     const SourcePlace& place) {
  const auto known =
      std::find_if(groups_.rbegin(), groups_.rend(), [&](const auto& group) { return group->type == type; });
  if (known == groups_.rend()) {
    groups_.push_back(std::make_unique<ElementGroup>(ElementGroup{type, nodesPerElement, hasTensors, {}, {}}));
    return *groups_.back();
  }
  if ((*known)->nodesPerElement != nodesPerElement) {
    throw ImportError(place, fmt::format("elements of the type {} have {} nodes here and {} before", type,
                                         nodesPerElement, (*known)->nodesPerElement));
  }
  return **known;
}

void ElementGroups::index() {
  std::vector<int> labels;
  for (const auto& group : groups_) {
    labels.insert(labels.end(), group->labels.begin(), group->labels.end());
    ends_.push_back(labels.size());
  }
  elements_ = base::LabelIndex(labels);
}

const std::string& ElementGroups::typeOf(int element) const {
  static const std::string none;
  const int place = elements_.placeOf(element);
  if (place < 0) return none;
  const auto end = std::upper_bound(ends_.begin(), ends_.end(), static_cast<std::size_t>(place));
  return groups_[static_cast<std::size_t>(end - ends_.begin())]->type;
}

std::string ElementGroups::commonType(std::span<const int> elements) const {
  if (elements.empty()) return {};
  const std::string& type = typeOf(elements.front());
  const bool isCommon =
      std::all_of(elements.begin(), elements.end(), [&](int element) { return typeOf(element) == type; });
  return isCommon ? type : std::string();
}

SpreadRows spreadOverElements(const std::vector<std::unique_ptr<ElementGroup>>& groups, std::span<const int> labels) {
  const base::LabelIndex rowOfNode(labels);
  std::vector<char> isUsed(labels.size(), 0);
  SpreadRows spread;
  std::size_t most = 0;
  for (const auto& group : groups) most += group->hasTensors ? group->connectivity.size() : 0;
  for (std::vector<int>* const column : {&spread.nodes, &spread.elements, &spread.rowOf}) column->reserve(most);
  bool isFirst = true;
  for (const auto& group : groups) {
    if (!group->hasTensors) continue;
    const std::size_t before = spread.rowOf.size();
    for (std::size_t i = 0; i < group->connectivity.size(); ++i) {
      const int row = rowOfNode.placeOf(group->connectivity[i]);
      if (row < 0) continue;
      isUsed[static_cast<std::size_t>(row)] = 1;
      spread.nodes.push_back(group->connectivity[i]);
      spread.elements.push_back(group->labels[i / static_cast<std::size_t>(group->nodesPerElement)]);
      spread.rowOf.push_back(row);
    }
    if (spread.rowOf.size() == before) continue;
    spread.type = isFirst ? group->type : "";
    isFirst = false;
  }
  spread.looseRows = static_cast<std::size_t>(std::count(isUsed.begin(), isUsed.end(), 0));
  return spread;
}

}  // namespace importers
