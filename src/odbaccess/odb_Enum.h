// The codes of the interface. The numbers are those that the file stores.
#pragma once

namespace odb_Enum {

// The kind of a field's rows.
enum odb_DataTypeEnum {
  scalar = 2,
  vector = 3,
  tensor3dFull = 5,     // 11, 22, 33, 12, 13, 23
  tensor3dPlanar = 6,   // 11, 22, 33, 12
  tensor3dSurface = 7,  // 11, 22, 12
  tensor2dPlanar = 8,   // 11, 22, 33, 12
  tensor2dSurface = 9   // 11, 22, 12
};

enum odb_PrecisionEnum { singlePrecision = 0, doublePrecision = 1 };

// The quantities that can be derived from a row.
enum odb_InvariantEnum {
  maxPrincipal = 1,
  midPrincipal = 2,
  minPrincipal = 3,
  mises = 4,
  tresca = 5,
  press = 6,
  inv3 = 7,
  magnitude = 8,
  maxInPlanePrincipal = 9,
  minInPlanePrincipal = 10,
  outOfPlanePrincipal = 11
};

// Where on the model the rows of a block lie.
enum odb_ResultPositionEnum { nodal = 1, integrationPoint, elementNodal, centroid, wholeElement };

}  // namespace odb_Enum

using odb_Enum::odb_InvariantEnum;

// Whether a data-type code is one of the five tensor kinds.
constexpr bool odb_isTensor(int dataType) {
  return dataType >= odb_Enum::tensor3dFull && dataType <= odb_Enum::tensor2dSurface;
}
