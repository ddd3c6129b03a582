#include "odbaccess/odb_String.h"

atr_StringBase::atr_StringBase(const char* text) : atr_StringBase(std::string_view(text ? text : "")) {}

atr_StringBase::atr_StringBase(std::string_view text)
    : text_(text.empty() ? nullptr : std::make_shared<const std::string>(text)) {}

int atr_StringBase::Find(const char* text, int start) const {
  if (start < 0 || start > length()) return length();
  const std::size_t at = view().find(text, static_cast<std::size_t>(start));
  return at == std::string_view::npos ? length() : static_cast<int>(at);
}

void atr_StringBase::append(const char* text) {
  if (*text == '\0') return;
  text_ = std::make_shared<const std::string>(std::string(view()) + text);
}

odb_String::odb_String(int number) : text_(std::to_string(number).c_str()) {}
