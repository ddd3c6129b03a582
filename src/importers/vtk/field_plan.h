// Which fields the arrays of a run become, and of which of their columns.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "importers/run/field_meanings.h"
#include "importers/run/field_shapes.h"
#include "importers/vtk/run_frames.h"

namespace importers::vtk {

// A component of an array.
struct Column {
  std::size_t array = 0;  // place in FieldPlan::arrays
  std::size_t component = 0;
};

// An array by its name among those at points or in cells. Arrays with another number of components are other ones.
struct PlannedArray {
  std::string name;
  std::size_t components = 1;
};

struct FieldPlan {
  odbstore::Position position = odbstore::Position::nodal;  // or centroid
  std::string name;                                         // in the database, before names are kept apart
  std::string source;                                       // what the files call it
  FieldMeaning meaning;
  std::vector<PlannedArray> arrays;
  std::vector<std::optional<Column>> columns;  // in the order of the database; nothing where all values are 0

  // Whether the rows of the field are those of its one array as they are.
  bool isArray() const;
};

// By names and numbers of components:
// - arrays of one component are put together by shapeFields();
// - 2 and 3 components are a vector, 6 a tensor with XX YY ZZ XY YZ XZ, 9 one row by row where it is symmetric, unless
//   the file names components: then the names decide;
// - all others are scalars, one for each component.
// Reads arrays of nine components, and coordinates where names tell a plane model's tensors alone. What is left out
// goes to `warn`. Fields come by name.
std::vector<FieldPlan> planFields(const RunFrames& run, const ShapeChoice& choice, const WarningSink& warn);

// The array of a piece that a plan means; null where the piece has none.
const StoredArray* findArray(const Piece& piece, odbstore::Position position, const PlannedArray& array);
// Whether the piece has rows of the field.
bool hasRows(const Piece& piece, const FieldPlan& plan);

}  // namespace importers::vtk
