#include "result/record_name.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

void appendCleaned(std::string& text, const odb_String& name) {
  const auto cleaned = [](char c) { return c == '-' || c == ' ' ? '_' : c; };
  const std::string_view bytes = name.cStr();
  std::transform(bytes.begin(), bytes.end(), std::back_inserter(text), cleaned);
}

}  // namespace

std::string cleanedName(const odb_String& name) {
  std::string cleaned;
  appendCleaned(cleaned, name);
  return cleaned;
}

RecordHead::RecordHead(const odb_String& step, int increment, const odb_String& regionTag, const odb_String& field) {
  appendCleaned(text_, step);
  text_ += "__Frame_";
  text_ += std::to_string(increment);
  appendCleaned(text_, regionTag);
  text_ += "__";
  appendCleaned(text_, field);
}
