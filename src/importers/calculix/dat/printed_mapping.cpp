#include "importers/calculix/dat/printed_mapping.h"

#include <numeric>

namespace importers::calculix {

namespace {

constexpr std::string_view kImaginary = "_IM";
constexpr std::string_view kLocal = "_LOCAL";

std::string_view endingOf(const DatFormat& format, StressAt stressAt) {
  switch (format.rows) {
    case DatRows::node:
    case DatRows::contactNode:
      return "_PRINT";
    case DatRows::integrationPoint:
      return stressAt == StressAt::integrationPoints ? "" : "_IP";
    case DatRows::contactFace:
      return "_IP";
    default:
      return "";
  }
}

std::string_view placeOf(const DatFormat& format) {
  switch (format.rows) {
    case DatRows::node:
    case DatRows::contactNode:
      return ", printed for sets";
    case DatRows::integrationPoint:
    case DatRows::contactFace:
      return " at integration points";
    default:
      return "";
  }
}

std::vector<MappedField> mapRows(const PrintedTable& table, StressAt stressAt, bool areLocal) {
  const DatFormat& format = *table.format;
  const std::string ending = std::string(endingOf(format, stressAt))
                                 .append(areLocal ? kLocal : "")
                                 .append(table.isImaginary ? kImaginary : "");
  const std::string description = std::string(format.description)
                                      .append(placeOf(format))
                                      .append(areLocal ? ", in local axes" : "")
                                      .append(table.isImaginary ? ", imaginary part" : "");
  std::vector<int> columns(table.width);
  std::iota(columns.begin(), columns.end(), 0);
  const std::string name = std::string(format.name) + ending;
  if (format.shape == DatShape::vector) return {vectorField(name, description, std::move(columns))};
  if (format.shape == DatShape::tensor) {
    return {tensorField(name, description, format.traits.isStress, std::move(columns))};
  }
  if (format.shape == DatShape::scalar) return {scalarField(name, description, 0)};
  std::vector<MappedField> fields;
  for (std::size_t column = 0; column < table.width; ++column) {
    fields.push_back(scalarField(format.outputName(table.columns[column]) + ending, description, column));
  }
  return fields;
}

}  // namespace

std::vector<MappedField> mapTable(const PrintedTable& table, StressAt stressAt) {
  std::vector<MappedField> fields;
  if (!table.format->isOfMesh() || table.isLeftOut) return fields;
  if (table.hasGlobalRows) fields = mapRows(table, stressAt, false);
  if (!table.hasLocalRows) return fields;
  for (MappedField& field : mapRows(table, stressAt, true)) {
    field.isLocal = true;
    fields.push_back(std::move(field));
  }
  return fields;
}

std::string outputName(const PrintedTable& table, std::size_t number, const DatValues& row) {
  const std::size_t column = table.columns[number];
  std::string name = table.format->outputName(column);
  if (name.empty()) return name;
  if (table.format->rows == DatRows::frequency) {
    name = "FACTOR" + std::to_string(row.labels[0]) + (name.ends_with(kImaginary) ? std::string(kImaginary) : "");
  }
  if (!table.part.empty()) name += "_" + table.part;
  if (row.isLocal) name += kLocal;
  // The extraction calls histories by the last thing that their place has: here the point, not the element.
  if (table.format->rows == DatRows::integrationPoint) name += "_" + std::to_string(row.labels[0]);
  return table.isImaginary ? name.append(kImaginary) : name;
}

}  // namespace importers::calculix
