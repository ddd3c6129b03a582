#include "result/record_name.h"

#include <algorithm>
#include <cstddef>

namespace {

void appendCleaned(std::string& text, const odb_String& name) {
  const std::size_t first = text.size();
  text += name.cStr();
  std::replace_if(
      text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), [](char c) { return c == '-' || c == ' '; }, '_');
}

}  // namespace

std::string cleanedName(const odb_String& name) {
  std::string cleaned;
  appendCleaned(cleaned, name);
  return cleaned;
}

RecordHead::RecordHead(const odb_String& step, int increment, const odb_String& regionTag, const odb_String& field) {
  constexpr std::size_t kRest = 96;  // the fixed parts, the numbers and what comes behind the head
  text_.reserve(static_cast<std::size_t>(step.length() + regionTag.length() + field.length()) + kRest);
  appendCleaned(text_, step);
  text_ += "__Frame_";
  text_ += std::to_string(increment);
  appendCleaned(text_, regionTag);
  text_ += "__";
  appendCleaned(text_, field);
}
