#include "history/write_history_output.h"

#include <limits>
#include <string>

#include "result/extraction_switches.h"
#include "result/record_name.h"

namespace {

void writeSample(std::ostream& out, const odb_SequenceFloat& sample) {
  out << "(";
  for (int j = 0; j < sample.size(); ++j) {
    if (j > 0) out << ", ";
    if (extractionSwitches().computeValues) {
      out << sample.constGet(j);
    } else {
      out << 0;
    }
  }
  out << ")";
}

void writeSamples(std::ostream& out, const odb_SequenceSequenceFloat& samples) {
  out << "(";
  for (int i = 0; i < samples.size(); ++i) {
    if (i > 0) out << ", ";
    writeSample(out, samples.constGet(i));
  }
  out << ")" << std::endl;
}

struct HistoryExtremes {
  float max = std::numeric_limits<float>::lowest();
  float min = std::numeric_limits<float>::max();
};

HistoryExtremes extremesOf(const odb_SequenceSequenceFloat& samples) {
  HistoryExtremes extremes;
  for (int i = 0; i < samples.size(); ++i) {
    const odb_SequenceFloat& sample = samples.constGet(i);
    if (sample.size() == 0) continue;
    const float value = sample.constGet(sample.size() - 1);
    if (value > extremes.max) extremes.max = value;
    if (value < extremes.min) extremes.min = value;
  }
  return extremes;
}

}  // namespace

void writeHistoryOutput(const odb_HistoryOutput& output, std::ostream& out, odb_String stepName, odb_String label,
                        odb_String) {
  const ExtractionSwitches& switches = extractionSwitches();
  const std::string step = cleanedName(stepName);
  std::string tail = cleanedName(output.name());
  if (label != odb_String()) tail += std::string("_") + label.cStr();
  const odb_SequenceSequenceFloat samples = output.data();

  if (switches.history) {
    out << step << "__History__" << tail << "\t";
    if (samples.size() == 0) {
      out << "None" << std::endl;
    } else {
      writeSamples(out, samples);
    }
  }
  if (!switches.historyExtremes || samples.size() == 0) return;
  const HistoryExtremes extremes = switches.computeValues ? extremesOf(samples) : HistoryExtremes{0.0F, 0.0F};
  out << step << "__History_Max__" << tail << "\t" << extremes.max << std::endl;
  out << step << "__History_Min__" << tail << "\t" << extremes.min << std::endl;
}
