#include "importers/calculix/printed_mapping.h"

#include <numeric>

namespace importers::calculix {

namespace {

constexpr std::string_view kImaginary = "_IM";

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

}  // namespace

std::vector<MappedField> mapTable(const PrintedTable& table, StressAt stressAt) {
  const DatFormat& format = *table.format;
  if (!format.isOfMesh()) return {};
  const std::string ending = std::string(endingOf(format, stressAt)).append(table.isImaginary ? kImaginary : "");
  const std::string description =
      std::string(format.description).append(placeOf(format)).append(table.isImaginary ? ", imaginary part" : "");
  std::vector<int> columns(format.width());
  std::iota(columns.begin(), columns.end(), 0);
  const std::string name = std::string(format.name) + ending;
  if (format.shape == DatShape::vector) return {vectorField(name, description, std::move(columns))};
  if (format.shape == DatShape::tensor) {
    return {tensorField(name, description, format.name == "S" || format.name == "SV", std::move(columns))};
  }
  if (format.shape == DatShape::scalar) return {scalarField(name, description, 0)};
  std::vector<MappedField> fields;
  for (std::size_t column = 0; column < table.width; ++column) {
    fields.push_back(scalarField(format.outputName(column) + ending, description, column));
  }
  return fields;
}

std::string outputName(const PrintedTable& table, std::size_t column, const DatValues& row) {
  std::string name = table.format->outputName(column);
  switch (table.format->rows) {
    case DatRows::frequency:
      return "FACTOR" + std::to_string(row.labels[0]) + (column > 1 ? std::string(kImaginary) : "");
    case DatRows::integrationPoint:
      // The extraction calls histories by the last thing that their place has: here the point, not the element.
      name += "_" + std::to_string(row.labels[0]);
      break;
    default:
      break;
  }
  return table.isImaginary ? name.append(kImaginary) : name;
}

}  // namespace importers::calculix
