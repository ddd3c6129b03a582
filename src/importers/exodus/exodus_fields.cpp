#include "importers/exodus/exodus_fields.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "importers/exodus/point_names.h"
#include "importers/run/field_meanings.h"

namespace importers::exodus {

namespace {

using odbstore::FieldType;
using odbstore::Position;

// Something that has variables: the nodes, a block, a set.
struct Holder {
  std::size_t number = 0;  // in names of variables; 0 for the nodes
  std::size_t entities = 0;
  std::string suffix;  // of names of fields
};

// What the file calls the variables of a kind.
struct VariableNames {
  const char* names;
  const char* values;
  const char* of;  // between the numbers of the variable and of its holder
};

constexpr VariableNames kOfNodes = {"name_nod_var", "vals_nod_var", ""};
constexpr VariableNames kOfElements = {"name_elem_var", "vals_elem_var", "eb"};
constexpr VariableNames kOfNodeSets = {"name_nset_var", "vals_nset_var", "ns"};
constexpr VariableNames kOfSideSets = {"name_sset_var", "vals_sset_var", "ss"};
constexpr VariableNames kOfElementSets = {"name_elset_var", "vals_elset_var", "es"};

// All variables of a kind: by holder and variable, null where there is none.
struct Variables {
  std::vector<std::string> names;
  std::vector<std::vector<Column>> columns;  // [holders][variables]

  bool has(std::size_t holder, std::size_t variable) const { return columns[holder][variable].variable != nullptr; }
};

class Planner {
 public:
  Planner(ExodusFile& file, const Model& model, std::size_t records, const FieldChoice& choice, const WarningSink& warn)
      : file_(file), model_(model), records_(records), choice_(choice), warn_(warn) {}

  FieldPlans plan() {
    planNodes();
    planElements();
    for (const Set& set : model_.nodeSets) planSet(set, kOfNodeSets);
    for (const Set& set : model_.sideSets) planSet(set, kOfSideSets);
    for (const Set& set : model_.elementSets) planSet(set, kOfElementSets);
    requireRoom();
    return std::move(plans_);
  }

 private:
  // Values that are packed, or that nobody has written, take next to no room in a file; no file of results is packed to
  // less than a thousandth.
  void requireRoom() const {
    constexpr double kMostPacked = 1032.0;  // zlib, Technical Details
    double values = 0.0;
    for (const FieldPlan& plan : plans_.fields) values += static_cast<double>(plan.rows * plan.components);
    const double bytes = values * sizeof(float) * static_cast<double>(records_);
    const double frames = static_cast<double>(plans_.fields.size()) * static_cast<double>(records_);
    const double most = static_cast<double>(file_.mostBytes());
    if (bytes <= most + kMostPacked * static_cast<double>(file_.bytes()) && frames * sizeof(OutlineRows) <= most)
      return;
    throw ImportError(file_.place("time_step"), "there are more results than a file of that size can hold");
  }

  void planNodes() {
    RowPlaces places;
    places.nodes = model_.nodeLabels;
    const std::vector<Holder> holders = {{0, model_.nodeLabels.size(), ""}};
    planAll(variablesOf(kOfNodes, holders), holders, Position::nodal,
            [&](const std::vector<std::size_t>&) { return places; });
  }

  void planElements() {
    std::vector<Holder> holders;
    for (const Block& block : model_.blocks) holders.push_back({block.number, block.elements, ""});
    const auto places = [&](const std::vector<std::size_t>& points) {
      RowPlaces at;
      const bool hasPoints = std::any_of(points.begin(), points.end(), [](std::size_t count) { return count > 1; });
      at.position = hasPoints ? Position::integrationPoint : Position::centroid;
      for (std::size_t b = 0; b < points.size(); ++b) {
        const Block& block = model_.blocks[b];
        for (std::size_t i = 0; i < block.elements; ++i) {
          for (std::size_t p = 0; p < points[b]; ++p) {
            at.elements.push_back(model_.elementLabels[block.first + i]);
            if (hasPoints) at.points.push_back(static_cast<int>(p + 1));
          }
        }
      }
      return at;
    };
    planAll(variablesOf(kOfElements, holders), holders, Position::centroid, places);
  }

  // A set's own fields bear its name, for another set may have other values at the same places.
  void planSet(const Set& set, const VariableNames& what) {
    if (set.members.empty() || file_.variable(what.names) == nullptr) return;
    RowPlaces places;
    const std::vector<int>& labels = set.kind == SetKind::nodes ? model_.nodeLabels : model_.elementLabels;
    std::vector<int>& to = set.kind == SetKind::nodes ? places.nodes : places.elements;
    places.position = set.kind == SetKind::nodes   ? Position::nodal
                      : set.kind == SetKind::sides ? Position::integrationPoint
                                                   : Position::centroid;
    for (const int member : set.members) {
      if (member < 0) return;  // rows without a place
      to.push_back(labels[static_cast<std::size_t>(member)]);
    }
    places.points = set.sides;
    const std::vector<Holder> holders = {{set.number, set.members.size(), "_" + set.name}};
    planAll(variablesOf(what, holders), holders, set.kind == SetKind::nodes ? Position::nodal : Position::centroid,
            [&](const std::vector<std::size_t>&) { return places; });
  }

  Variables variablesOf(const VariableNames& what, const std::vector<Holder>& holders) {
    Variables variables;
    variables.names = namesOf(what.names);
    looks_ += variables.names.size() * holders.size();
    // Few bytes can name many variables of many blocks.
    if (looks_ > file_.mostBytes() / (2 * sizeof(Column))) {
      throw ImportError(file_.place(what.names),
                        "there are more variables of blocks and sets than a file of that size can hold");
    }
    for (const Holder& holder : holders) {
      std::vector<Column>& columns = variables.columns.emplace_back();
      for (std::size_t v = 0; v < variables.names.size(); ++v) columns.push_back(columnOf(what, holder, v));
    }
    return variables;
  }

  const std::vector<std::string>& namesOf(const char* table) {
    const auto [names, isNew] = names_.try_emplace(table);
    if (!isNew) return names->second;
    names->second = file_.names(table);
    for (std::size_t v = 0; v < names->second.size(); ++v) {
      if (names->second[v].empty()) names->second[v] = fmt::format("variable_{}", v + 1);
    }
    return names->second;
  }

  // Truth tables are not asked: they say which variables are there, and where they err there is nothing to read.
  Column columnOf(const VariableNames& what, const Holder& holder, std::size_t v) const {
    if (holder.entities == 0) return {};
    const std::string plain = fmt::format("{}{}", what.values, v + 1);
    const netcdf::Variable* const own =
        file_.variable(holder.number == 0 ? plain : fmt::format("{}{}{}", plain, what.of, holder.number));
    if (own != nullptr && hasShape(*own, {holder.entities})) return {own, std::nullopt};
    if (own != nullptr) {
      warn_(base::warning(file_.place(own->name),
                          "does not hold a number for each time step and entity; it is left out"));
      return {};
    }
    const netcdf::Variable* const all = holder.number == 0 ? file_.variable(what.values) : nullptr;
    if (all == nullptr || all->dimensions.size() != 3) return {};
    const std::uint64_t planes = file_.shapeOf(*all)[1];
    return hasShape(*all, {planes, holder.entities}) && v < planes ? Column{all, v} : Column{};
  }

  // Whether a variable is one of numbers over [time, ...].
  bool hasShape(const netcdf::Variable& variable, const std::vector<std::uint64_t>& lengths) const {
    if (variable.kind == netcdf::Kind::text || variable.kind == netcdf::Kind::other) return false;
    const std::vector<std::uint64_t> shape = file_.shapeOf(variable);
    return shape.size() == lengths.size() + 1 && shape[0] >= records_ &&
           std::equal(lengths.begin(), lengths.end(), shape.begin() + 1);
  }

  template <class PlacesOf>
  void planAll(const Variables& variables, const std::vector<Holder>& holders, Position position,
               const PlacesOf& placesOf) {
    std::vector<PointVariable> gathered;
    if (choice_.hasIntegrationPoints && position == Position::centroid) {
      gathered = gatherPoints(variables.names);
    } else {
      for (std::size_t v = 0; v < variables.names.size(); ++v) gathered.push_back({variables.names[v], {v}, false});
    }
    std::vector<NamedComponent> components;
    std::vector<std::vector<std::size_t>> points;  // of each component, by holder
    for (const PointVariable& one : gathered) {
      std::vector<std::size_t> counts;
      std::string where;
      for (std::size_t h = 0; h < holders.size(); ++h) {
        counts.push_back(pointsOf(one, variables, h));
        where += fmt::format("{} ", counts.back());
      }
      if (std::all_of(counts.begin(), counts.end(), [](std::size_t count) { return count == 0; })) continue;
      components.push_back({one.name, where});
      points.push_back(std::move(counts));
      sources_.push_back(one.variables);
    }
    std::map<std::vector<std::size_t>, std::size_t> known;
    for (const ShapedField& shaped : shapeFields(components, choice_.shapes, model_.isPlane())) {
      const std::vector<std::size_t>& counts = points[shaped.columns.front()];
      const auto [place, isNew] = known.try_emplace(counts, plans_.places.size());
      if (isNew) plans_.places.push_back(placesOf(counts));
      add(shaped, variables, holders, components, counts, place->second, position);
    }
    sources_.clear();
  }

  // Points of a holder; those of several points count up to the first that the holder does not have.
  static std::size_t pointsOf(const PointVariable& one, const Variables& variables, std::size_t holder) {
    std::size_t count = 0;
    while (count < one.variables.size() && variables.has(holder, one.variables[count])) ++count;
    return count;
  }

  void add(const ShapedField& shaped, const Variables& variables, const std::vector<Holder>& holders,
           const std::vector<NamedComponent>& components, const std::vector<std::size_t>& counts, std::size_t places,
           Position position) {
    FieldPlan plan = planOf(shaped, variables, holders, counts, places, position);
    if (shaped.hasMirrors() && !isSymmetric(shaped, variables, counts)) {
      for (const ShapedField& scalar : scalarsOf(shaped, components)) {
        keep(planOf(scalar, variables, holders, counts, places, position));
      }
      return;
    }
    keep(std::move(plan));
  }

  void keep(FieldPlan plan) {
    const std::string name = plan.field.name;
    for (int number = 2; !taken_.insert({plan.field.name, plan.field.position}).second; ++number) {
      plan.field.name = fmt::format("{}_{}", name, number);
    }
    plans_.fields.push_back(std::move(plan));
  }

  FieldPlan planOf(const ShapedField& shaped, const Variables& variables, const std::vector<Holder>& holders,
                   const std::vector<std::size_t>& counts, std::size_t places, Position position) {
    FieldPlan plan;
    plan.places = places;
    plan.components = shaped.columns.size();
    plan.isNodalScalar = position == Position::nodal && shaped.type == FieldType::scalar;
    for (std::size_t h = 0; h < holders.size(); ++h) {
      if (counts[h] == 0) continue;
      FieldPart part = {holders[h].entities, counts[h], {}};
      for (std::size_t p = 0; p < counts[h]; ++p) {
        for (const std::size_t component : shaped.columns) part.columns.push_back(columnAt(variables, h, component, p));
      }
      plan.rows += part.entities * part.points;
      plan.parts.push_back(std::move(part));
    }
    const Position at = plans_.places[places].position == Position::integrationPoint && holders.front().suffix.empty()
                            ? Position::integrationPoint
                            : position;
    FieldMeaning meaning = meaningOf(shaped.name, shaped.type, at);
    plan.field = {shaped.name + holders.front().suffix,
                  shaped.name,
                  std::move(meaning.info),
                  false,
                  {},
                  at,
                  holders.front().suffix.empty() ? meaning.standardName : ""};
    return plan;
  }

  Column columnAt(const Variables& variables, std::size_t holder, std::size_t component, std::size_t point) const {
    return component == kNoComponent ? Column{} : variables.columns[holder][sources_[component][point]];
  }

  bool isSymmetric(const ShapedField& shaped, const Variables& variables, const std::vector<std::size_t>& counts) {
    const bool isFull = shaped.type == FieldType::tensor3dFull;
    for (std::size_t i = 0; i < (isFull ? shaped.mirrors.size() : 1); ++i) {
      for (std::size_t h = 0; h < counts.size(); ++h) {
        for (std::size_t p = 0; p < counts[h]; ++p) {
          const Column upper = columnAt(variables, h, shaped.columns[3 + i], p);
          if (!areEqualIn(upper, columnAt(variables, h, shaped.mirrors[i], p))) return false;
        }
      }
    }
    return true;
  }

  bool areEqualIn(const Column& one, const Column& other) {
    const std::uint64_t entities = file_.shapeOf(*one.variable).back();
    std::vector<double> values(entities);
    std::vector<double> others(entities);
    for (std::size_t record = 0; record < records_; ++record) {
      readPart(file_, {entities, 1, {one}}, 1, record, std::span(values));
      readPart(file_, {entities, 1, {other}}, 1, record, std::span(others));
      if (!areEqual(values, others)) return false;
    }
    return true;
  }

  ExodusFile& file_;
  const Model& model_;
  std::size_t records_;
  const FieldChoice& choice_;
  const WarningSink& warn_;
  FieldPlans plans_;
  std::vector<std::vector<std::size_t>> sources_;  // variables of each component, by point
  std::set<std::pair<std::string, std::optional<Position>>> taken_;
  std::map<std::string, std::vector<std::string>> names_;  // of variables, by their table
  std::size_t looks_ = 0;                                  // for variables of holders
};

template <typename Number>
void readColumn(ExodusFile& file, const Column& column, std::size_t record, std::span<Number> to) {
  if (column.plane) {
    file.read(*column.variable, std::vector<std::uint64_t>{record, *column.plane, 0},
              std::vector<std::uint64_t>{1, 1, to.size()}, to);
  } else {
    file.read(*column.variable, std::vector<std::uint64_t>{record, 0}, std::vector<std::uint64_t>{1, to.size()}, to);
  }
}

template <typename Number>
void readRows(ExodusFile& file, const FieldPart& part, std::size_t components, std::size_t record,
              std::span<Number> to) {
  if (part.columns.size() == 1 && part.columns[0].variable != nullptr) {
    readColumn(file, part.columns[0], record, to);
    return;
  }
  std::vector<Number> values(part.entities);
  const std::size_t width = part.points * components;
  for (std::size_t c = 0; c < width; ++c) {
    if (part.columns[c].variable == nullptr) {
      std::fill(values.begin(), values.end(), Number{0});
    } else {
      readColumn(file, part.columns[c], record, std::span(values));
    }
    for (std::size_t i = 0; i < part.entities; ++i) to[i * width + c] = values[i];
  }
}

}  // namespace

FieldPlans planFields(ExodusFile& file, const Model& model, std::size_t records, const FieldChoice& choice,
                      const WarningSink& warn) {
  for (const char* const others : {"name_edge_var", "name_face_var", "name_eset_var", "name_fset_var"}) {
    if (file.variable(others) == nullptr) continue;
    warn(base::warning(file.place(others), "variables of edges and faces are left out"));
  }
  return Planner(file, model, records, choice, warn).plan();
}

void readPart(ExodusFile& file, const FieldPart& part, std::size_t components, std::size_t record,
              std::span<float> to) {
  readRows(file, part, components, record, to);
}

void readPart(ExodusFile& file, const FieldPart& part, std::size_t components, std::size_t record,
              std::span<double> to) {
  readRows(file, part, components, record, to);
}

}  // namespace importers::exodus
