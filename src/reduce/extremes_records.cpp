#include "reduce/extremes_records.h"

#include "result/extraction_switches.h"

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

void ExtremesWriter::write(std::string_view quantity, Extreme extreme, double value) {
  line_ << quantity << extremeToken(extreme) << value;
  line_.end(out_);
}

void ExtremesWriter::writeAll(std::string_view quantity, const Extremes& extremes) {
  const ExtractionSwitches& switches = extractionSwitches();
  write(quantity, Extreme::max, extremes.max);
  write(quantity, Extreme::min, extremes.min);
  if (switches.engineeringMax) write(quantity, Extreme::engineeringMax, extremes.engineeringMax);
  if (switches.engineeringMin) write(quantity, Extreme::engineeringMin, extremes.engineeringMin);
}

void ExtremesWriter::writeVector(const std::array<Extremes, kVectorComponents>& components, Extreme engineeringMin) {
  for (std::size_t c = 0; c < components.size(); ++c) {
    write(kVectorQuantities[c], Extreme::max, components[c].max);
    write(kVectorQuantities[c], Extreme::min, components[c].min);
  }
  for (std::size_t c = 0; extractionSwitches().engineeringMax && c < components.size(); ++c) {
    write(kVectorQuantities[c], Extreme::engineeringMax, components[c].engineeringMax);
  }
  for (std::size_t c = 0; extractionSwitches().engineeringMin && c < components.size(); ++c) {
    write(kVectorQuantities[c], engineeringMin, components[c].engineeringMin);
  }
}

bool isScreenedRegion(const odb_String& regionTag) {
  const std::string_view tag = regionTag.cStr();
  return tag.find("Warn") != std::string_view::npos || tag.find("Info") != std::string_view::npos;
}

ComponentFlags cutToComponents(odb_Sequence<odb_String>& labels) {
  ComponentFlags present{};
  for (int i = 0; i < labels.size(); ++i) {
    constexpr std::size_t kKept = 2;
    std::string_view label = labels.constGet(i).cStr();
    if (label.size() > kKept) {
      const odb_String ending(label.substr(label.size() - kKept));
      labels[i] = ending;
      label = labels.constGet(i).view();
    }
    markComponent(label, present);
  }
  return present;
}
