#include "history/write_history_output.h"

#include <limits>
#include <string>

#include "result/extraction_switches.h"
#include "result/record_line.h"
#include "result/record_name.h"

namespace {

void addSample(RecordLine& line, const odb_SequenceFloat& sample) {
  line << "(";
  for (int j = 0; j < sample.size(); ++j) {
    if (j > 0) line << ", ";
    if (extractionSwitches().computeValues) {
      line << static_cast<double>(sample.constGet(j));
    } else {
      line << 0;
    }
  }
  line << ")";
}

void addSamples(RecordLine& line, const odb_SequenceSequenceFloat& samples) {
  line << "(";
  for (int i = 0; i < samples.size(); ++i) {
    if (i > 0) line << ", ";
    addSample(line, samples.constGet(i));
  }
  line << ")";
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

  RecordLine line;
  if (switches.history) {
    line << step << "__History__" << tail << "\t";
    if (samples.size() == 0) {
      line << "None";
    } else {
      addSamples(line, samples);
    }
    line.end(out);
  }
  if (!switches.historyExtremes || samples.size() == 0) return;
  const HistoryExtremes extremes = switches.computeValues ? extremesOf(samples) : HistoryExtremes{0.0F, 0.0F};
  line << step << "__History_Max__" << tail << "\t" << static_cast<double>(extremes.max);
  line.end(out);
  line << step << "__History_Min__" << tail << "\t" << static_cast<double>(extremes.min);
  line.end(out);
}
