// Which fields of the database a result block becomes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "importers/calculix/frd/frd_reader.h"
#include "odbstore/schema.h"

namespace importers::calculix {

// The suffix of the names of imaginary parts.
inline constexpr std::string_view kImaginaryEnding = "_IM";

// A symmetric tensor in three dimensions: 11, 22, 33, 12, 13, 23.
inline constexpr std::size_t kTensorComponents = 6;

// One field made of columns of a result block.
struct MappedField {
  std::string name;
  odbstore::FieldInfo info;
  std::vector<int> columns;  // of the block, in the order of the field's components
  bool isLocal = false;      // of those rows of a printed table that are in axes of the node or the element

  bool isTensor() const { return odbstore::isTensorType(info.type); }
};

// Which stresses, strains and other results of elements have the plain names: the averages at the nodes of the result
// file, or the values at integration points that the run has printed. The others end in "_IP" or "_NODAL".
enum class StressAt { nodes, integrationPoints };

MappedField scalarField(const std::string& name, const std::string& description, std::size_t column);
MappedField vectorField(const std::string& name, const std::string& description, std::vector<int> columns,
                        std::vector<std::string> labels = {"1", "2", "3"});
// `columns` in the order 11, 22, 33, 12, 13, 23.
MappedField tensorField(const std::string& name, const std::string& description, bool isStress,
                        std::vector<int> columns);

// What the block of stresses holds: only the deck knows.
enum class StressContent { stress, sectionForces };

// Known blocks get the names that users of field outputs know, all others their own. The components say what a block
// holds: six named ..XX, ..YY, ..ZZ, ..XY, ..YZ, ..ZX are a tensor; three named ..1, ..2, ..3 that the file declares as
// a vector are one, and more may follow. All else becomes one scalar per component, "<block>_<component>", or "<block>"
// if there is only one component. Imaginary parts end in "_IM". Field names of a block are unique. Section forces are
// two vectors in the axes of the beam: SF with shear along 1, shear along 2 and the normal force, SM with bending about
// 1, bending about 2 and the torque.
std::vector<MappedField> mapResult(const FrdResult& result, StressContent content = StressContent::stress,
                                   StressAt stressAt = StressAt::nodes);

std::vector<std::string> namesOfFields(const std::vector<MappedField>& fields);

}  // namespace importers::calculix
