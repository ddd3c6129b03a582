// The tables that the solver prints: what their rows hold, and under which names it is kept.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "importers/calculix/dat_reader.h"

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
  numbered,  // as many as there are, each for itself
  named      // each for itself, under names of their own
};

struct DatFormat {
  std::string_view title;
  DatRows rows = DatRows::ignored;
  DatShape shape = DatShape::scalar;
  std::string_view name;  // of the field, and of its outputs without their components
  std::string_view description;
  // DatShape::named: what the columns are called, separated by blanks.
  std::string_view columns = {};

  // How many numbers a row has at least.
  std::size_t width() const;
  // What a history of the i-th column of such rows is called: "U1", "S12", "NT", "SDV3".
  std::string outputName(std::size_t column) const;
  // Whether the rows are values at places of the mesh, which make a field.
  bool isOfMesh() const;
  // Whether the table has no rows of its own.
  bool isMark() const;
};

// The format of a table; one that is DatRows::ignored for a title that is not known.
const DatFormat& datFormatOf(const DatTable& table);

// The words of a row taken apart.
struct DatValues {
  std::array<int, 2> labels{};  // of node; element, point; element; mode
  std::vector<double> numbers;
};

// Takes a row apart; what follows its numbers (marks of local axes) is passed over. False for one that is damaged.
bool readDatRow(const DatFormat& format, const DatRow& row, DatValues& values);

}  // namespace importers::calculix
