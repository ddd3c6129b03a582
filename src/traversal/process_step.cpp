#include "traversal/process_step.h"

#include <algorithm>
#include <iostream>
#include <string>

#include "history/process_history_region.h"
#include "result/extraction_switches.h"
#include "result/progress.h"
#include "result/record_line.h"
#include "traversal/process_frame.h"

namespace {

// What a database says of a step without mass information.
constexpr double kNoMass = -1.0;

// Mass records replace only the hyphens.
std::string massPrefix(const odb_String& stepName) {
  std::string prefix = stepName.cStr();
  std::replace(prefix.begin(), prefix.end(), '-', '_');
  return prefix;
}

void addNumber(RecordLine& line, double number) {
  if (extractionSwitches().computeValues) {
    line << number;
  } else {
    line << 0;
  }
}

void writeList(std::ostream& out, const std::string& name, const odb_SequenceDouble& numbers) {
  if (numbers.size() == 0) return;
  RecordLine line;
  line << name << "\t(";
  for (int i = 0; i < numbers.size(); ++i) {
    if (i > 0) line << ", ";
    addNumber(line, numbers.constGet(i));
  }
  line << ")";
  line.end(out);
}

void writeMass(const odb_Step& step, std::ostream& out) {
  std::cout << "Extracting mass properties" << std::endl;
  if (step.mass() == kNoMass) return;
  const std::string prefix = massPrefix(step.name());
  RecordLine line;
  line << prefix << "__Mass\t";
  addNumber(line, step.mass());
  line.end(out);
  writeList(out, prefix + "__MassCenter", step.massCenter());
  writeList(out, prefix + "__InertiaCenter", step.inertiaAboutCenter());
  writeList(out, prefix + "__InertiaOrigin", step.inertiaAboutOrigin());
}

}  // namespace

void processStep(const odb_Odb& odb, const odb_Step& step, std::ostream& out, const odb_String& indent, int depth) {
  const ExtractionSwitches& switches = extractionSwitches();
  const odb_String name = step.name();
  std::cout << "Processing Step: " << shownInProgress(name) << std::endl;
  if (switches.mass) writeMass(step, out);
  if (depth < 1) return;
  odb_String deeper = indent;
  deeper.append("    ");
  if (switches.history || switches.historyExtremes) {
    cow_BtreeIterator<odb_String, odb_HistoryRegion> at(step.historyRegions());
    for (at.First(); !at.IsDone(); at.Next()) {
      const odb_HistoryRegion region = at.CurrentValue();
      processHistoryRegion(region, out, name, deeper, depth - 1);
    }
  }
  if (switches.field) {
    Regions regions(odb);
    const odb_SequenceFrame& frames = step.frames();
    for (int i = 0; i < frames.size(); ++i) {
      const odb_Frame frame = frames.constGet(i);
      processFrame(regions, frame, out, name, deeper, depth - 1);
    }
  }
}
