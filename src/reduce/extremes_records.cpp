#include "reduce/extremes_records.h"

#include <algorithm>

#include "result/extraction_switches.h"
#include "result/record_line.h"

std::string_view extremeToken(Extreme extreme) {
  switch (extreme) {
    case Extreme::max:
      return "__max\t";
    case Extreme::min:
      return "__min\t";
    case Extreme::engineeringMax:
      return "__enggmax\t";
    default:
      return "__enggmin\t";
  }
}

namespace {

// Records of a region, one after the other.
class Records {
 public:
  Records(std::ostream& out, const RecordHead& head) : out_(out), head_(head) {}

  void write(std::string_view quantity, Extreme extreme, double value) {
    line_ << head_.text() << quantity << extremeToken(extreme) << value;
    line_.end(out_);
  }

 private:
  std::ostream& out_;
  const RecordHead& head_;
  RecordLine line_;
};

}  // namespace

void writeExtreme(std::ostream& out, const RecordHead& head, std::string_view quantity, Extreme extreme, double value) {
  Records(out, head).write(quantity, extreme, value);
}

void writeExtremes(std::ostream& out, const RecordHead& head, std::string_view quantity, const Extremes& extremes) {
  const ExtractionSwitches& switches = extractionSwitches();
  Records records(out, head);
  records.write(quantity, Extreme::max, extremes.max);
  records.write(quantity, Extreme::min, extremes.min);
  if (switches.engineeringMax) records.write(quantity, Extreme::engineeringMax, extremes.engineeringMax);
  if (switches.engineeringMin) records.write(quantity, Extreme::engineeringMin, extremes.engineeringMin);
}

void writeVectorComponents(std::ostream& out, const RecordHead& head,
                           const std::array<Extremes, kVectorComponents>& components, Extreme engineeringMin) {
  Records records(out, head);
  for (std::size_t c = 0; c < components.size(); ++c) {
    records.write(kVectorQuantities[c], Extreme::max, components[c].max);
    records.write(kVectorQuantities[c], Extreme::min, components[c].min);
  }
  for (std::size_t c = 0; extractionSwitches().engineeringMax && c < components.size(); ++c) {
    records.write(kVectorQuantities[c], Extreme::engineeringMax, components[c].engineeringMax);
  }
  for (std::size_t c = 0; extractionSwitches().engineeringMin && c < components.size(); ++c) {
    records.write(kVectorQuantities[c], engineeringMin, components[c].engineeringMin);
  }
}

bool isScreenedRegion(const odb_String& regionTag) {
  const std::string_view tag = regionTag.cStr();
  return tag.find("Warn") != std::string_view::npos || tag.find("Info") != std::string_view::npos;
}

ComponentFlags cutToComponents(odb_Sequence<odb_String>& labels) {
  ComponentFlags present{};
  for (int i = 0; i < labels.size(); ++i) {
    const std::string_view label = labels.constGet(i).cStr();
    const odb_String ending(label.substr(label.size() - std::min<std::size_t>(label.size(), 2)));
    labels[i] = ending;
    markComponent(ending.view(), present);
  }
  return present;
}
