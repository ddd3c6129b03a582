#include "result/record_name.h"

#include <algorithm>

std::string cleanedName(const odb_String& name) {
  std::string cleaned = name.cStr();
  std::replace(cleaned.begin(), cleaned.end(), '-', '_');
  std::replace(cleaned.begin(), cleaned.end(), ' ', '_');
  return cleaned;
}

RecordHead::RecordHead(const odb_String& step, int increment, const odb_String& regionTag, const odb_String& field)
    : text_(cleanedName(step) + "__Frame_" + std::to_string(increment) + cleanedName(regionTag) + "__" +
            cleanedName(field)) {}
