// Which fields the variables of an Exodus file become, and where each of their numbers is.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "importers/exodus/exodus_file.h"
#include "importers/exodus/exodus_model.h"
#include "importers/run/field_shapes.h"
#include "importers/run/outline.h"

namespace importers::exodus {

// The values of a component at one point of every entity: a variable [time, entities], or of files of old one plane of
// [time, variables, entities].
struct Column {
  const netcdf::Variable* variable = nullptr;  // null: 0 everywhere
  std::optional<std::uint64_t> plane;
};

// Rows at the nodes, the elements of a block, or the members of a set: one for each point of each entity.
struct FieldPart {
  std::size_t entities = 0;
  std::size_t points = 1;
  std::vector<Column> columns;  // [points, components]
};

// The labels of a field's rows, in the order of its parts; shared by fields that exist in the same places.
struct RowPlaces {
  odbstore::Position position = odbstore::Position::nodal;
  std::vector<int> nodes;
  std::vector<int> elements;
  std::vector<int> points;
};

struct FieldPlan {
  OutlineField field;  // without its frames
  std::size_t components = 1;
  std::vector<FieldPart> parts;
  std::size_t places = 0;  // of FieldPlans::places
  std::size_t rows = 0;

  bool isNodalScalar = false;  // in double precision
};

struct FieldPlans {
  std::vector<RowPlaces> places;
  std::vector<FieldPlan> fields;
};

struct FieldChoice {
  ShapeChoice shapes;
  bool hasIntegrationPoints = false;  // stress_xx_1 .. _8 and stress_xx_qp_0 .. are values at integration points
};

// Fields of the nodes, the elements, and each node, side and element set. Nine components are a tensor only where their
// values are symmetric in all of the `records`, which is read for that. Warns of variables of edges and faces, which
// are left out.
FieldPlans planFields(ExodusFile& file, const Model& model, std::size_t records, const FieldChoice& choice,
                      const WarningSink& warn);

// Values of a part in a record, [entities, points, components].
void readPart(ExodusFile& file, const FieldPart& part, std::size_t components, std::size_t record, std::span<float> to);
void readPart(ExodusFile& file, const FieldPart& part, std::size_t components, std::size_t record,
              std::span<double> to);

}  // namespace importers::exodus
