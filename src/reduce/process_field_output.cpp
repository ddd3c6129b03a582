#include "reduce/process_field_output.h"

#include "reduce/extremes_records.h"
#include "reduce/list_record_names.h"
#include "reduce/reduce_field_output_values.h"
#include "reduce/write_bulk_field_records.h"
#include "result/configuration_keywords.h"
#include "result/extraction_switches.h"
#include "result/indentation.h"

namespace {

bool isWanted(const odb_FieldOutput& field) {
  const ExtractionSwitches& switches = extractionSwitches();
  return switches.wantsAllFieldOutputs() || wantsFieldOutput(switches, field.description().view());
}

// Nothing depends on the section points; the read stays because a damaged location is to end the run here.
void readSectionPoints(const odb_FieldOutput& field) {
  const odb_SequenceFieldLocation& locations = field.locations();
  for (int i = 0; i < locations.size(); ++i) {
    static_cast<void>(locations.constGet(static_cast<unsigned>(i)).sectionPoints().size());
  }
}

}  // namespace

void processFieldOutput(const odb_FieldOutput& field, std::ostream& out, const odb_String& stepName, int increment,
                        const odb_String& regionKind, const odb_String& regionTag, const odb_String& indent,
                        int depth) {
  if (isScreenedRegion(regionTag)) return;
  const bool wholeModel = regionKind.view() == "ALL";
  if (!extractionSwitches().computeValues) {
    if (isWanted(field))
      listRecordNames(field, out, RecordHead(stepName, increment, regionTag, field.name()), wholeModel);
    return;
  }
  if (depth <= 0) return;
  readSectionPoints(field);
  if (!isWanted(field)) return;
  static DeeperIndentation indentation;
  const odb_String& deeper = indentation.of(indent);
  const odb_Sequence<odb_InvariantEnum> invariants = field.validInvariants();
  if (wholeModel) {
    writeBulkFieldRecords(field.bulkDataBlocks(), out, stepName, increment, regionKind, regionTag, field.name(),
                          invariants, deeper, field.hasEngineeringShear());
  } else {
    odb_Sequence<odb_String> labels = field.componentLabels();
    reduceFieldOutputValues(field.values(), out, stepName, increment, regionKind, regionTag, field.name(), invariants,
                            labels, field.type(), deeper, field.hasEngineeringShear());
  }
}
