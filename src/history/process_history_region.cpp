#include "history/process_history_region.h"

#include <iostream>

#include "history/write_history_output.h"
#include "result/progress.h"

namespace {

// The thresholds differ: labels count from 0, any integration point but 0, section points from 1.
odb_String labelOf(const odb_HistoryRegion& region) {
  const odb_HistoryPoint point = region.historyPoint();
  odb_String label;
  if (point.node().label() >= 0) label = odb_String(point.node().label());
  if (point.element().label() >= 0) label = odb_String(point.element().label());
  if (point.integrationPoint() != 0) label = odb_String(point.integrationPoint());
  if (point.sectionPoint().number() > 0) label = odb_String(point.sectionPoint().number());
  const odb_String set = point.region().name();
  if (set != odb_String()) label = set;
  return label;
}

}  // namespace

void processHistoryRegion(const odb_HistoryRegion& region, std::ostream& out, odb_String stepName, odb_String indent,
                          int depth) {
  std::cout << "Processing History Region: " << shownInProgress(region.description()) << std::endl;
  if (depth < 1) return;
  const odb_String label = labelOf(region);
  indent.append("    ");
  const cow_Btree<odb_String, odb_HistoryOutput> outputs = region.historyOutputs();
  cow_BtreeIterator<odb_String, odb_HistoryOutput> at(outputs);
  for (at.First(); !at.IsDone(); at.Next()) {
    writeHistoryOutput(at.CurrentValue(), out, stepName, label, indent);
  }
}
