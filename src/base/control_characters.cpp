#include "base/control_characters.h"

#include <fmt/core.h>

#include <algorithm>

namespace base {

namespace {

bool isPlain(char c) { return c >= ' ' && c < '\x7f'; }

// The bytes of the first control character; empty if there is none.
std::string_view firstControl(std::string_view text) {
  while (true) {
    text.remove_prefix(static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPlain) - text.begin()));
    if (text.empty()) return text;
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = utf8Length(text);
    const bool isShort = length == 1 || (length == 0 && first < 0xA0);
    const bool isLong = length == 2 && first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
    if (isShort || isLong) return text.substr(0, isLong ? 2 : 1);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
}

}  // namespace

std::size_t utf8Length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  const unsigned first = byte(0);
  const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (text.empty() || length == 0 || first > 0xF4) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return 0;
  }
  // Overlong forms, surrogates and code points beyond the last character.
  if ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F)) return 0;
  if ((first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F)) return 0;
  return length;
}

bool hasControlCharacter(std::string_view text) { return !firstControl(text).empty(); }

std::string escaped(std::string_view text) {
  std::string shown;
  for (std::string_view control = firstControl(text); !control.empty(); control = firstControl(text)) {
    shown.append(text.data(), control.data());
    for (const char c : control) shown += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    text.remove_prefix(static_cast<std::size_t>(control.data() - text.data()) + control.size());
  }
  return shown.append(text);
}

}  // namespace base
