#include "reduce/write_bulk_field_records.h"

#include "reduce/extremes_records.h"
#include "reduce/reduce_bulk_block.h"
#include "reduce/reduction_results.h"
#include "result/extraction_switches.h"
#include "result/indentation.h"

namespace {

// What the blocks of a field have in common so far.
struct FieldReduction {
  Extremes extremes = startingExtremes();
  int type = 0;
  ComponentFlags present{};

  void takeBlock(const Extremes& block) {
    if (block.max > extremes.max) extremes.max = block.max;
    if (block.min < extremes.min) extremes.min = block.min;
    if (block.engineeringMax > extremes.engineeringMax) extremes.engineeringMax = block.engineeringMax;
    if (block.engineeringMin < extremes.engineeringMin) extremes.engineeringMin = block.engineeringMin;
  }

  void takeLabels(const odb_Sequence<odb_String>& labels) {
    for (int i = 0; i < labels.size(); ++i) markComponent(labels.constGet(i).view(), present);
  }
};

void writeTensorRecords(ExtremesWriter& records, const FieldReduction& field) {
  records.writeAll("__mises", field.extremes);
  if (!extractionSwitches().fieldComponents) return;
  for (std::size_t c = 0; c < field.present.size(); ++c) {
    if (field.present[c]) records.writeAll(kTensorQuantities[c], reductionResults().tensor[c]);
  }
}

void writeVectorRecords(ExtremesWriter& records, bool wholeModel, const FieldReduction& field) {
  records.writeAll("__mag", field.extremes);
  if (!extractionSwitches().fieldComponents) return;
  // Over a region a component's engineering minimum goes by the name of its plain minimum: readers rely on it.
  records.writeVector(reductionResults().vector, wholeModel ? Extreme::engineeringMin : Extreme::min);
}

}  // namespace

void writeBulkFieldRecords(const odb_SequenceFieldBulkData& blocks, std::ostream& out, const odb_String& prefix,
                           int frame, const odb_String& scope, const odb_String& regionName,
                           const odb_String& fieldName, const odb_Sequence<odb_InvariantEnum>& invariants,
                           const odb_String& indentation, bool flag) {
  static DeeperIndentation blockIndentation;
  FieldReduction field;
  for (int i = 0; i < blocks.size(); ++i) {
    if (i == 0 && extractionSwitches().fieldComponents) {
      for (Extremes& component : reductionResults().vector) component.resetPlain();
    }
    const odb_FieldBulkData& block = blocks[i];
    field.type = block.type();
    reduceBulkBlock(block, out, prefix, frame, fieldName, invariants, blockIndentation.of(indentation), flag);
    field.takeBlock(reductionResults().block);
    if (odb_isTensor(field.type)) field.takeLabels(block.componentLabels());
  }

  const bool wholeModel = scope.view() == "ALL";
  if (!wholeModel && field.extremes.max == kLowest<double>) return;
  ExtremesWriter records(out, RecordHead(prefix, frame, wholeModel ? odb_String() : regionName, fieldName));
  if (odb_isTensor(field.type)) {
    writeTensorRecords(records, field);
  } else if (field.type == odb_Enum::vector) {
    writeVectorRecords(records, wholeModel, field);
  } else {
    records.writeAll("", field.extremes);
  }
}
