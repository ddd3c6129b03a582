// Fields and frames on the page, as many as have room.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "odbstore/reader.h"
#include "report/field_rows.h"
#include "report/importance.h"
#include "report/page_data.h"

namespace report {

// A field in a frame: step, frame, name.
using ShownField = std::tuple<std::size_t, int, std::string>;

struct FieldsPart {
  // [{name, description, kind, on: "vertices" or "elements", halvedShear, quantities}]
  Json fields;
  // By step, then frame: [{step, frame, fields: [{field, columns: {name: [lowest, highest, array]}, extremes:
  // {quantity: {max: place, min: place}}}]}]. Columns are those of docs/report.md: of a vector 1, 2, 3; of a tensor
  // mises and, where they have had room, its components; of a scalar "".
  Json frames;
  std::set<ShownField> shown;
  std::size_t leftOut = 0;         // those for which there was no room
  std::size_t withoutDetails = 0;  // tensors of which only the equivalent stress had room
};

// A place as the page has it: {value, vertex, element, node, cell, point, instance, at: [x, y, z]}, what is not known
// left out. `vertex` and `element` are numbers of the page, `node` and `cell` labels, `point` an integration point.
Json placeJson(const Place& place, const inspect::ModelMesh& mesh, const Surface& surface);

// Takes candidates by their importance until one has no room. Throws StoreError.
FieldsPart fieldsPart(const odbstore::Reader& reader, const inspect::ModelMesh& mesh, const Surface& surface,
                      PageData& data);

}  // namespace report
