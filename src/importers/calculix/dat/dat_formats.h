// The tables that the solver prints: what their rows hold, and the names of the results.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "importers/calculix/dat/dat_reader.h"

namespace importers::calculix {

// What a row of a table belongs to.
enum class DatRows {
  node,              // label
  integrationPoint,  // element, point
  element,           // element
  total,             // the set of the table
  wholeModel,        // the model
  contactNode,       // node
  contactFace,       // element, face; one row for each of its points
  mode,              // a mode: one or two labels, the last one counts
  modeSum,           // all modes
  modeFactors,       // a mode, in a table for one frequency of a steady state
  section,           // no rows: tables without a time that follow belong to its surface
  eigenvalue,        // no rows: the mode that the following tables belong to
  frequency,         // rows of modeFactors; the following tables belong to its frequency
  realPart,          // no rows: the part that the following tables are
  imaginaryPart,
  ignored
};

// How the numbers of a row go together.
enum class DatShape {
  scalar,
  vector,    // three components
  tensor,    // xx, yy, zz, xy, xz, yz
  numbered,  // any number of scalars
  named      // each a scalar with its own name
};

// What a table begins besides its rows.
enum class DatBegins { nothing, modes, bucklingModes };

// Properties of only a few formats.
struct DatTraits {
  bool isOfNodes = false;  // sums: over a set of nodes, not of elements
  bool isStress = false;   // tensors: has an equivalent stress
  // How many of the first columns a table may lack.
  std::size_t optionalColumns = 0;
  // The names of the columns in the heading, separated by "|", for tables whose columns vary.
  std::string_view words = {};
  DatBegins begins = DatBegins::nothing;
};

struct DatFormat {
  std::string_view title;
  DatRows rows = DatRows::ignored;
  DatShape shape = DatShape::scalar;
  std::string_view name;  // of the field, and of its outputs without their components
  std::string_view description;
  // The keys with which a deck requests such tables, separated by blanks; empty if irrelevant.
  std::string_view keys = {};
  // DatShape::named: the names of the columns, separated by blanks; "-" for columns that are not results.
  std::string_view columns = {};
  DatTraits traits = {};

  // How many labels a row begins with; modes have one or two.
  std::size_t labels() const;
  // How many numbers a row has, when it has all of them.
  std::size_t width() const;
  // The name of a history of the i-th column of such rows: "U1", "S12", "NT", "SDV3"; empty if the column is not a
  // result.
  std::string outputName(std::size_t column) const;
  // Whether the rows are values at places of the mesh, which make a field.
  bool isOfMesh() const;
  // Whether the table never has rows.
  bool isMark() const;
  // Whether that key of a deck requests such tables; with TOTALS they are sums.
  bool isAskedBy(std::string_view key) const;
};

// The format of a table; one without a title for an unknown table. Known tables that are not imported are
// DatRows::ignored.
const DatFormat& datFormatOf(const DatTable& table);

// All formats, in the order of the solver's manual.
std::span<const DatFormat> datFormats();

// The columns of the format that the numbers of a row belong to, for a row of `numbers` numbers; nothing if that is
// ambiguous. `heading` is the text above the rows.
std::optional<std::vector<std::size_t>> datColumns(const DatFormat& format, std::string_view heading,
                                                   std::size_t numbers);

// A parsed row.
struct DatValues {
  std::array<int, 2> labels{};  // of node; element, point; element; mode and nodal diameter
  std::vector<double> numbers;
  bool hasDiameter = false;  // of modes
  bool isLocal = false;      // in axes of the node or the element: the row ends in "L" or the name of an orientation
};

// Whether a row is a remark instead of a result: sums under other rows, and the motions of knots.
bool isRemark(const DatRow& row);

// Parses a row. False if it is damaged.
bool readDatRow(const DatFormat& format, const DatRow& row, DatValues& values);

}  // namespace importers::calculix
