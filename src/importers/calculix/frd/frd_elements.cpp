#include "importers/calculix/frd/frd_elements.h"

#include <fmt/core.h>

namespace importers::calculix {

std::size_t ElementGatherer::nodesOf(int code) const {
  if (code < 1 || code > kElementCodes) lines_.fail(fmt::format("the element type code {} is not known", code));
  return elementCode(code).order.size();
}

void ElementGatherer::add(int label, int code, std::span<const int> nodes) {
  const std::span<const int> order = elementCode(code).order;
  std::size_t& place = groupOfCode_[static_cast<std::size_t>(code)];
  if (place == 0) {
    elements_.groups.push_back({code, static_cast<int>(order.size()), {}, {}});
    place = elements_.groups.size();
  }
  FrdElementGroup& group = elements_.groups[place - 1];
  group.labels.push_back(label);
  for (const int from : order) group.connectivity.push_back(nodes[static_cast<std::size_t>(from)]);
}

}  // namespace importers::calculix
