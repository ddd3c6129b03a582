#include "reduce/list_record_names.h"

#include "reduce/extremes_records.h"
#include "result/extraction_switches.h"

namespace {

void writeZeroExtremes(ExtremesWriter& records, std::string_view quantity) { records.writeAll(quantity, Extremes{}); }

void listInvariants(const odb_FieldOutput& field, ExtremesWriter& records) {
  const odb_Sequence<odb_InvariantEnum> valid = field.validInvariants();
  for (const InvariantQuantity& invariant : kInvariantQuantities) {
    if (valid.isMember(invariant.code)) writeZeroExtremes(records, invariant.quantity);
  }
}

void listTensor(const odb_FieldOutput& field, ExtremesWriter& records) {
  writeZeroExtremes(records, "__mises");
  if (!extractionSwitches().fieldComponents) return;
  odb_Sequence<odb_String> labels = field.componentLabels();
  const ComponentFlags present = cutToComponents(labels);
  for (std::size_t c = 0; c < present.size(); ++c) {
    if (present[c]) writeZeroExtremes(records, kTensorQuantities[c]);
  }
}

void listVector(ExtremesWriter& records) {
  writeZeroExtremes(records, "__mag");
  if (extractionSwitches().fieldComponents) records.writeVector({}, Extreme::engineeringMin);
}

}  // namespace

void listRecordNames(const odb_FieldOutput& field, std::ostream& out, const RecordHead& head, bool wholeModel) {
  const odb_SequenceFieldBulkData& blocks = field.bulkDataBlocks();
  if (blocks.size() == 0) return;
  ExtremesWriter records(out, head);
  if (!wholeModel && extractionSwitches().tensorInvariants && field.name().view() == "S") {
    listInvariants(field, records);
  }
  const int type = blocks[0].type();
  if (odb_isTensor(type)) {
    listTensor(field, records);
  } else if (type == odb_Enum::vector) {
    listVector(records);
  } else {
    writeZeroExtremes(records, "");
  }
}
