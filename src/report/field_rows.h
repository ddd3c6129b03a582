// What a field has on the page in a frame: a row for each vertex or element, and the exact extremes of all rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "odbstore/stored_field.h"
#include "report/quantities.h"
#include "report/surface.h"

namespace report {

// A field of the page. `quantities` are called as in names of records.
struct PageField {
  std::string name;
  std::string description;
  FieldKind kind = FieldKind::scalar;
  bool isOfElements = false;            // one row for each element, else for each vertex
  bool hasHalvedShear = false;          // stored shear components are twice those of the tensor
  std::vector<std::string> quantities;  // "" of scalars; "mag", "1", "2", "3"; "mises", "11", ..., "tresca", ...
};

// As the field describes itself in the frame, in which it exists. Nothing where no block has rows there.
std::optional<PageField> pageField(const odbstore::StoredField& field, int frame);

// Where a number stands. Labels are -1 where the position has none of the kind.
struct Place {
  double value = 0;
  std::string instance;
  int node = -1;
  int element = -1;
  int integrationPoint = -1;
  std::int64_t point = -1;  // of the mesh, for a number at a node
  std::int64_t cell = -1;   // of the mesh, for one in an element
};

struct FieldFrame {
  std::vector<float> rows;  // [vertices or elements, width]; not a number where the field has none
  struct Extremes {
    Place max;
    Place min;
  };
  std::map<std::string, Extremes> extremes;  // by quantity; none for one without numbers
};

// Reads rows for the page. One thread at a time.
class FieldRows {
 public:
  // Both live as long.
  FieldRows(const inspect::ModelMesh& mesh, const Surface& surface) : mesh_(mesh), surface_(surface) {}

  // A vertex has the mean of its rows, over all elements there, an element that of its points; quantities are derived
  // from means. Extremes are of the stored numbers, over the whole model; of equal ones the first row is meant. Throws
  // StoreError.
  FieldFrame read(const PageField& page, const odbstore::StoredField& field, int frame);

 private:
  // A stored row, and a vertex or element that has it.
  struct Target {
    std::int32_t row;
    std::int32_t place;
    float weight;  // how many rows of the location it stands for
  };
  const std::vector<Target>& targetsOf(const odbstore::StoredLocation& location, bool isOfElements);
  std::vector<Target> makeTargets(const odbstore::StoredLocation& location, bool isOfElements) const;
  Place placeOf(const odbstore::StoredLocation& location, std::size_t storedRow) const;
  void takeExtremes(const PageField& page, const odbstore::StoredBlock& block, int frame, std::span<const float> rows,
                    FieldFrame& made) const;

  const inspect::ModelMesh& mesh_;
  const Surface& surface_;
  std::map<const odbstore::StoredLocation*, std::vector<Target>> targets_;
};

}  // namespace report
