#include "importers/vtk/field_plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "importers/input/text_fields.h"
#include "importers/vtk/array_reader.h"
#include "importers/vtk/ghosts.h"

namespace importers::vtk {

namespace {

using odbstore::FieldType;
using odbstore::Position;

constexpr std::size_t kMostScalars = 64;

// Rows of a matrix: 11 22 33 12 13 23, and 21 31 32.
constexpr std::array<std::size_t, 6> kOfNine = {0, 4, 8, 1, 2, 5};
constexpr std::array<std::size_t, 3> kMirrors = {3, 6, 7};
constexpr std::array<std::size_t, 6> kOfSix = {0, 1, 2, 3, 5, 4};

const std::vector<StoredArray>& arraysOf(const Piece& piece, Position position) {
  return position == Position::nodal ? piece.pointData : piece.cellData;
}

// An array wherever it is in the run.
struct SeenArray {
  PlannedArray array;
  std::vector<std::string> componentNames;
  std::uint64_t where = 0;  // a sum over the pieces that have it
};

template <typename Take>
void eachPiece(const RunFrames& run, const Take& take) {
  for (const RunFrame& frame : run.frames) {
    for (const GridFile& file : frame.files) {
      for (const Piece& piece : file.grid.pieces) take(file, piece);
    }
  }
}

bool isNoResult(const std::string& name) { return isOfGhosts(name) || name.starts_with("vtkOriginal"); }

class Planner {
 public:
  Planner(const RunFrames& run, const ShapeChoice& choice, const WarningSink& warn)
      : run_(run), choice_(choice), warn_(warn) {}

  std::vector<FieldPlan> plan() {
    for (const Position position : {Position::nodal, Position::centroid}) {
      look(position);
      planScalars(position);
      for (const SeenArray& array : seen_) {
        if (array.array.components > 1) planArray(position, array);
      }
    }
    std::stable_sort(plans_.begin(), plans_.end(),
                     [](const FieldPlan& a, const FieldPlan& b) { return a.name < b.name; });
    return std::move(plans_);
  }

 private:
  void look(Position position) {
    seen_.clear();
    std::map<std::string, std::size_t> places;
    std::uint64_t number = 0;
    eachPiece(run_, [&](const GridFile& file, const Piece& piece) {
      number = (number + 1) * 0x9E3779B97F4A7C15U;
      for (const StoredArray& array : arraysOf(piece, position)) {
        if (isNoResult(array.name)) continue;
        const auto [known, isNew] = places.try_emplace(array.name, seen_.size());
        if (isNew) seen_.push_back({{array.name, array.components}, array.componentNames, 0});
        SeenArray& seen = seen_[known->second];
        seen.where = (seen.where ^ number) * 0xC2B2AE3D27D4EB4FU;
        if (seen.array.components == array.components) continue;
        warn_(base::warning({file.path, array.line},
                            fmt::format("the array \"{}\" has {} components here and {} before; it is left out",
                                        array.name, array.components, seen.array.components)));
      }
    });
  }

  void planScalars(Position position) {
    std::vector<NamedComponent> scalars;
    for (const SeenArray& seen : seen_) {
      if (seen.array.components == 1) scalars.push_back({nameOf(seen.array), std::to_string(seen.where)});
    }
    std::vector<ShapedField> fields = shapeFields(scalars, choice_, false);
    std::vector<ShapedField> plane = shapeFields(scalars, choice_, true);
    // More is grouped in two dimensions, which the coordinates have to tell.
    if (plane.size() != fields.size() && isPlane()) fields = std::move(plane);
    for (const ShapedField& field : fields) {
      if (field.hasMirrors() && !isSymmetric(position, scalars, field)) {
        for (const ShapedField& one : scalarsOf(field, scalars)) addOfScalars(position, one, scalars);
      } else {
        addOfScalars(position, field, scalars);
      }
    }
  }

  static std::string nameOf(const PlannedArray& array) {
    const std::string name = utf8Text(array.name);
    return trimmed(name).empty() ? "unnamed" : name;
  }

  // The array whose name a scalar has.
  const PlannedArray& arrayOf(std::size_t scalar) const {
    std::size_t place = 0;
    for (const SeenArray& seen : seen_) {
      if (seen.array.components == 1 && place++ == scalar) return seen.array;
    }
    return seen_.front().array;
  }

  void addOfScalars(Position position, const ShapedField& field, const std::vector<NamedComponent>& scalars) {
    FieldPlan plan;
    std::vector<std::string> sources;
    for (const std::size_t column : field.columns) {
      if (column == kNoComponent) {
        plan.columns.emplace_back();
        continue;
      }
      plan.columns.push_back(Column{plan.arrays.size(), 0});
      plan.arrays.push_back(arrayOf(column));
      sources.push_back(scalars[column].name);
    }
    plan.source = fmt::format("{}", fmt::join(sources, ", "));
    add(position, field.name, field.type, std::move(plan));
  }

  void add(Position position, const std::string& name, FieldType type, FieldPlan plan) {
    plan.position = position;
    plan.name = name;
    plan.meaning = meaningOf(name, type, position);
    plans_.push_back(std::move(plan));
  }

  void addOfArray(Position position, const std::string& name, FieldType type, const PlannedArray& array,
                  std::span<const std::size_t> components) {
    FieldPlan plan;
    plan.arrays = {array};
    plan.source = nameOf(array);
    for (const std::size_t component : components) {
      plan.columns.push_back(component == kNoComponent ? std::nullopt : std::optional(Column{0, component}));
    }
    add(position, name, type, std::move(plan));
  }

  void planArray(Position position, const SeenArray& seen) {
    const PlannedArray& array = seen.array;
    const std::string name = nameOf(array);
    if (array.components > kMostScalars) {
      warn_(base::warning({run_.frames.front().path},
                          fmt::format("the array \"{}\" has {} components, more than {}; it is "
                                      "left out",
                                      name, array.components, kMostScalars)));
      return;
    }
    if (!seen.componentNames.empty() && planNamed(position, seen)) return;
    if (array.components == 2) {
      return addOfArray(position, name, FieldType::vector, array, std::array<std::size_t, 3>{0, 1, kNoComponent});
    }
    if (array.components == 3) {
      return addOfArray(position, name, FieldType::vector, array, std::array<std::size_t, 3>{0, 1, 2});
    }
    if (array.components == 6) return addOfArray(position, name, FieldType::tensor3dFull, array, kOfSix);
    if (array.components == 9 && isSymmetric(position, array)) {
      return addOfArray(position, name, FieldType::tensor3dFull, array, kOfNine);
    }
    for (std::size_t i = 0; i < array.components; ++i) {
      const std::size_t number = array.components == 9 ? 10 * (i / 3 + 1) + i % 3 + 1 : i + 1;
      addOfArray(position, fmt::format("{}_{}", name, number), FieldType::scalar, array, std::array<std::size_t, 1>{i});
    }
  }

  // By the names of the components; false where they say nothing.
  bool planNamed(Position position, const SeenArray& seen) {
    const std::vector<std::string>& names = seen.componentNames;
    if (std::set<std::string>(names.begin(), names.end()).size() != names.size()) return false;
    if (std::any_of(names.begin(), names.end(), [](const std::string& one) { return trimmed(one).empty(); }))
      return false;
    const std::string name = nameOf(seen.array);
    std::vector<NamedComponent> components;
    for (const std::string& one : names) components.push_back({"of_" + utf8Text(one)});
    const std::vector<ShapedField> fields = shapeFields(components, {true, true}, true);
    const bool isOne = fields.size() == 1 && fields.front().type != FieldType::scalar;
    if (isOne && !fields.front().hasMirrors()) {
      addOfArray(position, name, fields.front().type, seen.array, fields.front().columns);
      return true;
    }
    if (isOne) return false;  // nine
    for (std::size_t i = 0; i < names.size(); ++i) {
      addOfArray(position, fmt::format("{}_{}", name, utf8Text(names[i])), FieldType::scalar, seen.array,
                 std::array<std::size_t, 1>{i});
    }
    return true;
  }

  bool isSymmetric(Position position, const PlannedArray& array) const {
    bool isSame = true;
    eachPiece(run_, [&](const GridFile& file, const Piece& piece) {
      const StoredArray* const stored = isSame ? findArray(piece, position, array) : nullptr;
      if (stored == nullptr) return;
      std::vector<double> values;
      if (!read(file, *stored, values)) return;
      std::vector<double> upper(values.size() / 9);
      std::vector<double> lower(upper.size());
      for (std::size_t i = 0; i < kMirrors.size(); ++i) {
        for (std::size_t row = 0; row < upper.size(); ++row) {
          upper[row] = values[9 * row + kOfNine[3 + i]];
          lower[row] = values[9 * row + kMirrors[i]];
        }
        isSame = isSame && areEqual(upper, lower);
      }
    });
    return isSame;
  }

  bool isSymmetric(Position position, const std::vector<NamedComponent>&, const ShapedField& field) const {
    bool isSame = true;
    for (std::size_t i = 0; i < field.mirrors.size(); ++i) {
      if (field.mirrors[i] == kNoComponent) continue;
      const PlannedArray& upper = arrayOf(field.columns[3 + i]);
      const PlannedArray& lower = arrayOf(field.mirrors[i]);
      eachPiece(run_, [&](const GridFile& file, const Piece& piece) {
        const StoredArray* const one = isSame ? findArray(piece, position, upper) : nullptr;
        const StoredArray* const other = isSame ? findArray(piece, position, lower) : nullptr;
        std::vector<double> values;
        std::vector<double> others;
        if (one == nullptr || other == nullptr || !read(file, *one, values) || !read(file, *other, others)) return;
        isSame = areEqual(values, others);
      });
    }
    return isSame;
  }

  // False for an array that is damaged, of which nobody asks here.
  static bool read(const GridFile& file, const StoredArray& array, std::vector<double>& values) {
    try {
      const InputFile input(file.path);
      ArrayReader reader(input, array);
      values.resize(array.numbers());
      reader.read(std::span(values));
      return true;
    } catch (const ImportError&) {
      return false;
    }
  }

  // Whether all points of the first frame have one z.
  bool isPlane() const {
    std::optional<double> z;
    for (const GridFile& file : run_.frames.front().files) {
      for (const Piece& piece : file.grid.pieces) {
        std::vector<double> points;
        if (!read(file, piece.coordinates, points)) return false;
        for (std::size_t i = 2; i < points.size(); i += 3) {
          if (!z) z = points[i];
          if (points[i] != *z) return false;
        }
      }
    }
    return z.has_value();
  }

  const RunFrames& run_;
  const ShapeChoice& choice_;
  const WarningSink& warn_;
  std::vector<SeenArray> seen_;
  std::vector<FieldPlan> plans_;
};

}  // namespace

bool FieldPlan::isArray() const {
  if (arrays.size() != 1 || columns.size() != arrays.front().components) return false;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (!columns[i] || columns[i]->component != i) return false;
  }
  return true;
}

std::vector<FieldPlan> planFields(const RunFrames& run, const ShapeChoice& choice, const WarningSink& warn) {
  return Planner(run, choice, warn).plan();
}

const StoredArray* findArray(const Piece& piece, Position position, const PlannedArray& array) {
  const std::vector<StoredArray>& arrays = arraysOf(piece, position);
  const auto found = std::find_if(arrays.begin(), arrays.end(), [&](const StoredArray& one) {
    return one.name == array.name && one.components == array.components;
  });
  return found == arrays.end() ? nullptr : &*found;
}

bool hasRows(const Piece& piece, const FieldPlan& plan) {
  return std::all_of(plan.arrays.begin(), plan.arrays.end(),
                     [&](const PlannedArray& array) { return findArray(piece, plan.position, array) != nullptr; });
}

}  // namespace importers::vtk
