// The codes of the interface. The numbers are those that the file stores.
//
//     if (odb_isTensor(field.type())) ...
//     if (block.precision() == odb_Enum::doublePrecision) use(block.dataDouble());
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

// In what the rows of a block are stored: float or double.
enum odb_PrecisionEnum { singlePrecision = 0, doublePrecision = 1 };

// The quantities that can be derived from a row; odb_FieldValue.h has their formulas.
enum odb_InvariantEnum {
  maxPrincipal = 1,  // principal values of the tensor, largest first
  midPrincipal = 2,
  minPrincipal = 3,
  mises = 4,                // equivalent stress
  tresca = 5,               // largest less smallest principal value
  press = 6,                // pressure, positive in compression
  inv3 = 7,                 // from the third invariant of the deviator
  magnitude = 8,            // length of a vector
  maxInPlanePrincipal = 9,  // principal values in the plane 1-2
  minInPlanePrincipal = 10,
  outOfPlanePrincipal = 11  // the one across it
};

// Where on the model the rows of a block lie.
enum odb_ResultPositionEnum {
  nodal = 1,
  integrationPoint = 2,
  elementNodal = 3,  // at the nodes, for each element by itself
  centroid = 4,
  wholeElement = 5
};

}  // namespace odb_Enum

using odb_Enum::odb_InvariantEnum;

// Whether a data-type code is one of the five tensor kinds.
constexpr bool odb_isTensor(int dataType) {
  return dataType >= odb_Enum::tensor3dFull && dataType <= odb_Enum::tensor2dSurface;
}
