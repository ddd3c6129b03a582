#include "reduce/list_record_names.h"

#include "reduce/extremes_records.h"
#include "result/extraction_switches.h"

namespace {

void writeZeroExtremes(std::ostream& out, const RecordHead& head, std::string_view quantity) {
  writeExtremes(out, head, quantity, Extremes{});
}

void listInvariants(const odb_FieldOutput& field, std::ostream& out, const RecordHead& head) {
  const odb_Sequence<odb_InvariantEnum> valid = field.validInvariants();
  for (const InvariantQuantity& invariant : kInvariantQuantities) {
    if (valid.isMember(invariant.code)) writeZeroExtremes(out, head, invariant.quantity);
  }
}

void listTensor(const odb_FieldOutput& field, std::ostream& out, const RecordHead& head) {
  writeZeroExtremes(out, head, "__mises");
  if (!extractionSwitches().fieldComponents) return;
  odb_Sequence<odb_String> labels = field.componentLabels();
  const ComponentFlags present = cutToComponents(labels);
  for (std::size_t c = 0; c < present.size(); ++c) {
    if (present[c]) writeZeroExtremes(out, head, kTensorQuantities[c]);
  }
}

void listVector(std::ostream& out, const RecordHead& head) {
  writeZeroExtremes(out, head, "__mag");
  if (extractionSwitches().fieldComponents) writeVectorComponents(out, head, {}, Extreme::engineeringMin);
}

}  // namespace

void listRecordNames(const odb_FieldOutput& field, std::ostream& out, const RecordHead& head, bool wholeModel) {
  const odb_SequenceFieldBulkData& blocks = field.bulkDataBlocks();
  if (blocks.size() == 0) return;
  if (!wholeModel && extractionSwitches().tensorInvariants && field.name().view() == "S") {
    listInvariants(field, out, head);
  }
  const int type = blocks[0].type();
  if (odb_isTensor(type)) {
    listTensor(field, out, head);
  } else if (type == odb_Enum::vector) {
    listVector(out, head);
  } else {
    writeZeroExtremes(out, head, "");
  }
}
