#include "importers/run/field_shapes.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include "importers/input/text_fields.h"

namespace importers {

namespace {

using odbstore::FieldType;

constexpr std::size_t kAxes = 3;
constexpr std::string_view kLetters = "XYZ";
constexpr std::string_view kDigits = "123";

// The ends of names that go on in the same way, and where each stands: by axis, or row by row of a matrix.
struct Group {
  std::string name;  // as the first component spells it
  std::vector<std::size_t> places;
  bool isAmbiguous = false;  // a component comes twice, or on something else than the others

  bool has(std::size_t end) const { return places[end] != kNoComponent; }
  std::size_t count() const {
    return places.size() - static_cast<std::size_t>(std::count(places.begin(), places.end(), kNoComponent));
  }
};

struct Ending {
  std::string stem;  // with the "_"
  std::size_t end = 0;
};

// The axes that the last characters of a name stand for.
std::optional<Ending> endingOf(const std::string& name, std::size_t length, std::string_view axes) {
  if (name.size() <= length) return std::nullopt;
  const std::string upper = upperCased(name);
  const std::size_t begin = name.size() - length;
  std::size_t end = 0;
  for (std::size_t i = begin; i < name.size(); ++i) {
    const std::size_t axis = axes.find(upper[i]);
    if (axis == std::string_view::npos) return std::nullopt;
    end = kAxes * end + axis;
  }
  // "Sxx" may be of a tensor S or a vector Sx; only "Sx_x" and "SxX" are of the vector for certain.
  const char before = name[begin - 1];
  const bool isCut = axes == kLetters && (std::islower(before) != 0) != (std::islower(name[begin]) != 0);
  const bool isLetterOfAxis = axes.find(upper[begin - 1]) != std::string_view::npos;
  if (length == 1 && isLetterOfAxis && !isCut) return std::nullopt;
  std::string stem = name.substr(0, begin);
  if (stem == "_") return std::nullopt;
  return Ending{std::move(stem), end};
}

// Fields out of the groups of one kind that are complete; marks their components as used.
class Shaper {
 public:
  Shaper(std::span<const NamedComponent> components, bool isPlane)
      : components_(components), isPlane_(isPlane), isUsed_(components.size(), false) {}

  void take(std::string_view axes) {
    if (axes == kDigits) countNumbered();
    for (const Group& group : groups(2, axes)) takeTensor(group);
    for (const Group& group : groups(1, axes)) takeVector(group);
  }

  std::vector<ShapedField> finish() {
    while (dropCollisions()) {
    }
    for (std::size_t i = 0; i < components_.size(); ++i) {
      if (!isUsed_[i]) fields_.push_back({components_[i].name, FieldType::scalar, {i}});
    }
    const auto first = [](const ShapedField& field) {
      std::size_t least = *std::min_element(field.columns.begin(), field.columns.end());
      for (const std::size_t mirror : field.mirrors) least = std::min(least, mirror);
      return least;
    };
    std::sort(fields_.begin(), fields_.end(),
              [&](const ShapedField& a, const ShapedField& b) { return first(a) < first(b); });
    return std::move(fields_);
  }

 private:
  std::vector<Group> groups(std::size_t length, std::string_view axes) const {
    std::map<std::string, std::size_t> known;  // by stem
    std::vector<Group> groups;
    for (std::size_t i = 0; i < components_.size(); ++i) {
      const std::optional<Ending> ending = isUsed_[i] ? std::nullopt : endingOf(components_[i].name, length, axes);
      if (!ending) continue;
      const auto [at, isNew] = known.try_emplace(upperCased(ending->stem), groups.size());
      if (isNew) {
        std::string name = ending->stem;
        if (name.back() == '_') name.pop_back();
        groups.push_back(
            {std::move(name), std::vector<std::size_t>(length == 1 ? kAxes : kAxes * kAxes, kNoComponent)});
      }
      Group& group = groups[at->second];
      group.isAmbiguous = group.isAmbiguous || group.has(ending->end) || !isWhereOthersAre(group, i);
      group.places[ending->end] = i;
    }
    for (const auto& [stem, group] : known) {
      const auto all = numbered_.find(stem);
      if (all != numbered_.end() && all->second != groups[group].count()) groups[group].isAmbiguous = true;
    }
    return groups;
  }

  bool isWhereOthersAre(const Group& group, std::size_t component) const {
    return std::all_of(group.places.begin(), group.places.end(), [&](std::size_t place) {
      return place == kNoComponent || components_[place].where == components_[component].where;
    });
  }

  // How many names there are of each that only a number follows: _1 to _8 are no vector and two more.
  void countNumbered() {
    for (const NamedComponent& component : components_) {
      const std::size_t end = component.name.find_last_not_of("0123456789");
      if (end + 1 < component.name.size()) ++numbered_[upperCased(component.name.substr(0, end + 1))];
    }
  }

  void takeVector(const Group& group) {
    if (group.isAmbiguous || !group.has(0) || !group.has(1)) return;
    if (!group.has(2) && !isPlane_) return;
    add(group, {group.name, FieldType::vector, group.places});
  }

  void takeTensor(const Group& group) {
    if (group.isAmbiguous) return;
    const auto at = [&](std::size_t row, std::size_t column) { return group.places[kAxes * row + column]; };
    const auto either = [&](std::size_t a, std::size_t b) { return std::min(at(a, b), at(b, a)); };
    const auto both = [&](std::size_t a, std::size_t b) {
      return at(a, b) != kNoComponent && at(b, a) != kNoComponent;
    };
    ShapedField field = {group.name, FieldType::tensor3dFull, {}};
    if (at(0, 0) == kNoComponent || at(1, 1) == kNoComponent || either(0, 1) == kNoComponent) return;
    const bool isFull = either(0, 2) != kNoComponent && either(1, 2) != kNoComponent && at(2, 2) != kNoComponent;
    const bool isPlane = isPlane_ && either(0, 2) == kNoComponent && either(1, 2) == kNoComponent;
    if (!isFull && !isPlane) return;
    const bool hasMirrors = both(0, 1);
    if (isFull && (both(0, 2) != hasMirrors || both(1, 2) != hasMirrors)) return;
    const auto upper = [&](std::size_t a, std::size_t b) { return hasMirrors ? at(a, b) : either(a, b); };
    field.columns = {at(0, 0), at(1, 1), at(2, 2), upper(0, 1)};
    if (isFull) field.columns.insert(field.columns.end(), {upper(0, 2), upper(1, 2)});
    if (isPlane) field.type = FieldType::tensor2dPlanar;
    if (hasMirrors) field.mirrors = {at(1, 0), at(2, 0), at(2, 1)};
    add(group, std::move(field));
  }

  void add(const Group& group, ShapedField field) {
    mark(group.places, true);
    fields_.push_back(std::move(field));
  }

  void mark(std::span<const std::size_t> places, bool isUsed) {
    for (const std::size_t place : places) {
      if (place != kNoComponent) isUsed_[place] = isUsed;
    }
  }

  // Groups whose name is also that of another group or of a scalar fall apart. Returns whether there were any.
  bool dropCollisions() {
    std::map<std::string, int> count;
    for (const ShapedField& field : fields_) ++count[upperCased(field.name)];
    for (std::size_t i = 0; i < components_.size(); ++i) {
      if (!isUsed_[i]) ++count[upperCased(components_[i].name)];
    }
    return std::erase_if(fields_, [&](const ShapedField& field) {
             if (count.at(upperCased(field.name)) == 1) return false;
             mark(field.columns, false);
             mark(field.mirrors, false);
             return true;
           }) > 0;
  }

  std::span<const NamedComponent> components_;
  bool isPlane_;
  std::vector<bool> isUsed_;
  std::map<std::string, std::size_t> numbered_;
  std::vector<ShapedField> fields_;
};

}  // namespace

std::vector<ShapedField> shapeFields(std::span<const NamedComponent> components, const ShapeChoice& choice,
                                     bool isPlane) {
  Shaper shaper(components, isPlane);
  if (choice.isGrouped) {
    shaper.take(kLetters);
    if (choice.withNumbers) shaper.take(kDigits);
  }
  return shaper.finish();
}

std::vector<ShapedField> scalarsOf(const ShapedField& field, std::span<const NamedComponent> components) {
  std::set<std::size_t> places(field.columns.begin(), field.columns.end());
  places.insert(field.mirrors.begin(), field.mirrors.end());
  places.erase(kNoComponent);
  std::vector<ShapedField> scalars;
  for (const std::size_t place : places) scalars.push_back({components[place].name, FieldType::scalar, {place}});
  return scalars;
}

bool areEqual(std::span<const double> values, std::span<const double> others) {
  constexpr double kTolerance = 1e-5;
  double largest = 0.0;
  for (const std::span<const double> some : {values, others}) {
    for (const double value : some) {
      if (std::isfinite(value)) largest = std::max(largest, std::abs(value));
    }
  }
  return std::equal(values.begin(), values.end(), others.begin(), others.end(), [&](double a, double b) {
    return a == b || std::abs(a - b) <= kTolerance * largest || (std::isnan(a) && std::isnan(b));
  });
}

}  // namespace importers
