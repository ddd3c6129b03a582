#include "importers/run/field_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "importers/input/text_fields.h"

namespace importers {

namespace {

using odbstore::Position;

// A field in all steps.
struct Field {
  std::string name;
  std::optional<Position> position;
  std::string standardName;
  std::string final = {};
  bool isAsked = false;  // the name is the user's
};

using Key = std::pair<std::string, std::optional<Position>>;

const char* suffixOf(Position position) {
  switch (position) {
    case Position::integrationPoint:
      return "_IP";
    case Position::elementNodal:
      return "_ELNO";
    case Position::centroid:
    case Position::wholeElement:
      return "_ELEM";
    case Position::nodal:
      break;
  }
  return "";
}

std::string upperStandard(const Field& field) { return upperCased(field.standardName); }

class StandardNames {
 public:
  explicit StandardNames(const Outline& outline) {
    for (const OutlineStep& step : outline.steps) {
      for (const OutlineField& field : step.fields) {
        if (!place_.try_emplace({field.name, field.position}, fields_.size()).second) continue;
        fields_.push_back({field.name, field.position, field.standardName, field.name});
      }
    }
  }

  void rename(const std::pair<std::string, std::string>& rename, const Outline& outline, const std::string& file) {
    bool isThere = false;
    for (Field& field : fields_) {
      const bool isMeant = upperCased(field.name) == upperCased(rename.first) ||
                           (!field.standardName.empty() && upperStandard(field) == upperCased(rename.first));
      if (!isMeant) continue;
      isThere = true;
      field.final = rename.second;
      field.isAsked = true;
    }
    if (isThere) return;
    throw ImportError(file, 0, fmt::format("there is no field {} to rename; {}", rename.first, whatThereIs(outline)));
  }

  // Two fields of a position may both be taken for the stresses: neither is.
  void takeStandardNames() {
    std::map<Key, int> count;
    for (const Field& field : fields_) {
      ++count[{field.final, field.position}];
      const bool isOpen = !field.isAsked && !field.standardName.empty() && field.standardName != field.final;
      if (isOpen) ++count[{field.standardName, field.position}];
    }
    for (Field& field : fields_) {
      if (field.isAsked || field.standardName.empty()) continue;
      if (count.at({field.standardName, field.position}) == 1) field.final = field.standardName;
    }
  }

  void requireOneOfEach(const std::string& file) const {
    std::set<Key> taken;
    for (const Field& field : fields_) {
      if (taken.insert({field.final, field.position}).second) continue;
      throw ImportError(file, 0, fmt::format("two fields would be called {}", field.final));
    }
  }

  void tellPositionsApart() {
    std::map<std::string, std::set<std::optional<Position>>> positions;
    std::set<std::string> taken;
    for (const Field& field : fields_) {
      positions[field.final].insert(field.position);
      taken.insert(field.final);
    }
    for (Field& field : fields_) {
      if (!field.position || positions.at(field.final).size() == 1) continue;
      const std::string suffix = suffixOf(*field.position);
      if (suffix.empty()) continue;
      const std::string base = field.final + suffix;
      field.final = base;
      for (int number = 2; !taken.insert(field.final).second; ++number)
        field.final = fmt::format("{}_{}", base, number);
    }
  }

  std::vector<std::string> changes() const {
    std::vector<std::string> changes;
    for (const Field& field : fields_) {
      if (!field.isAsked && field.final != field.name) changes.push_back(field.name + " as " + field.final);
    }
    return changes;
  }

  const std::string& finalOf(const OutlineField& field) const {
    return fields_[place_.at({field.name, field.position})].final;
  }

 private:
  std::vector<Field> fields_;
  std::map<Key, std::size_t> place_;
};

}  // namespace

void nameFields(Outline& outline, const FieldNaming& naming, const std::string& file, const WarningSink& warn) {
  StandardNames names(outline);
  for (const auto& rename : naming.renames) names.rename(rename, outline, file);
  if (!naming.keepNames) names.takeStandardNames();
  names.requireOneOfEach(file);
  names.tellPositionsApart();
  const std::vector<std::string> changes = names.changes();
  if (!changes.empty())
    warn(base::note({file}, fmt::format("fields are imported under other names: {}", listed(changes))));
  for (OutlineStep& step : outline.steps) {
    for (OutlineField& field : step.fields) field.name = names.finalOf(field);
  }
}

}  // namespace importers
