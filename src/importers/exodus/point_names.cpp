#include "importers/exodus/point_names.h"

#include <map>
#include <optional>

#include "importers/input/text_fields.h"

namespace importers::exodus {

namespace {

struct PointName {
  std::string stem;  // with what stands before the number
  std::string name;
  std::size_t number = 0;
};

std::optional<PointName> pointName(const std::string& name) {
  const std::size_t end = name.find_last_not_of("0123456789");
  if (end == std::string::npos || end == 0 || end + 1 == name.size() || name[end] != '_') return std::nullopt;
  const std::optional<int> number = integerFrom(name.substr(end + 1));
  if (!number) return std::nullopt;
  PointName found = {upperCased(name.substr(0, end + 1)), name.substr(0, end), static_cast<std::size_t>(*number)};
  if (found.stem.ends_with("_QP_")) found.name.resize(found.name.size() - 3);
  if (found.name.empty()) return std::nullopt;
  return found;
}

struct Group {
  std::string name;
  std::map<std::size_t, std::size_t> variables;  // by number
  bool isAmbiguous = false;

  // Numbers are in order and each is there once.
  bool isComplete() const {
    const std::size_t first = variables.begin()->first;
    const std::size_t last = variables.rbegin()->first;
    return !isAmbiguous && variables.size() >= 2 && first <= 1 && last - first + 1 == variables.size();
  }
};

}  // namespace

std::vector<PointVariable> gatherPoints(std::span<const std::string> names) {
  std::map<std::string, Group> groups;
  std::vector<std::optional<PointName>> parsed;
  for (std::size_t i = 0; i < names.size(); ++i) {
    parsed.push_back(pointName(names[i]));
    if (!parsed.back()) continue;
    Group& group = groups[parsed.back()->stem];
    if (group.name.empty()) group.name = parsed.back()->name;
    if (!group.variables.emplace(parsed.back()->number, i).second) group.isAmbiguous = true;
  }
  std::vector<PointVariable> found;
  for (std::size_t i = 0; i < names.size(); ++i) {
    Group* const group = parsed[i] ? &groups.at(parsed[i]->stem) : nullptr;
    if (group == nullptr || group->variables.empty() || !group->isComplete()) {
      if (group == nullptr || !group->variables.empty()) found.push_back({names[i], {i}, false});
      continue;
    }
    PointVariable& variable = found.emplace_back(PointVariable{group->name, {}, true});
    for (const auto& [number, place] : group->variables) variable.variables.push_back(place);
    group->variables.clear();  // the others of the group are in here
  }
  return found;
}

}  // namespace importers::exodus
