#include "traversal/process_frame.h"

#include <iostream>

#include "reduce/process_field_output.h"
#include "result/extraction_switches.h"
#include "result/indentation.h"
#include "result/progress.h"

void processFrame(const odb_Odb& odb, const odb_Frame& frame, std::ostream& out, const odb_String& stepName,
                  const odb_String& indent, int depth) {
  Regions regions(odb);
  processFrame(regions, frame, out, stepName, indent, depth);
}

void processFrame(Regions& regions, const odb_Frame& frame, std::ostream& out, const odb_String& stepName,
                  const odb_String& indent, int depth) {
  std::cout << "Processing Frame: " << shownInProgress(frame.description()) << std::endl;
  if (depth <= 0) return;
  static DeeperIndentation deeper;
  const bool withSets = extractionSwitches().fieldSets || extractionSwitches().tensorInvariants;
  const odb_String wholeModel("ALL");
  cow_BtreeIterator<odb_String, odb_FieldOutput> at(frame.fieldOutputs());
  for (at.First(); !at.IsDone(); at.Next()) {
    // A copy, so that what the field reads goes before the next one comes.
    const odb_FieldOutput field = at.CurrentValue();
    const auto visit = [&](const odb_FieldOutput& part, const odb_String& kind, const odb_String& tag) {
      processFieldOutput(part, out, stepName, frame.incrementNumber(), kind, tag, deeper.of(indent), depth - 1);
    };
    visit(field, wholeModel, odb_String());
    if (!withSets) continue;
    regions.forEach([&](const Region& region) { visit(field.getSubset(region.set), region.kind, region.tag); });
  }
}
