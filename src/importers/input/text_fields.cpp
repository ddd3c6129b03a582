#include "importers/input/text_fields.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

namespace importers {

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

namespace {

// from_chars takes no plus sign.
std::string_view withoutPlus(std::string_view text) {
  if (text.size() > 1 && text.front() == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
  return text;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// What a number beyond the range of its type stands for: nothing or everything, by its exponent or, without one, by
// where its first digit stands.
template <class Number>
Number beyondRange(std::string_view text) {
  const std::size_t mark = text.find_first_of("eE");
  const bool isSmall = mark != std::string_view::npos ? text.find('-', mark) != std::string_view::npos
                                                      : text.find_first_of("123456789") > text.find('.');
  const Number size = isSmall ? Number{0} : std::numeric_limits<Number>::infinity();
  return text.front() == '-' ? -size : size;
}

template <class Number>
std::optional<Number> parse(std::string_view text) {
  Number value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || end != text.data() + text.size()) return std::nullopt;
  if (error == std::errc()) return value;
  if (error == std::errc::result_out_of_range) return beyondRange<Number>(text);
  return std::nullopt;
}

// The text with the letter that its exponent has lost; empty where there is no such place.
std::string withExponentLetter(std::string_view text) {
  const std::size_t sign = text.find_last_of("+-");
  if (sign == std::string_view::npos || sign == 0) return {};
  const char before = text[sign - 1];
  if (!isDigit(before) && before != '.') return {};
  return std::string(text.substr(0, sign)) + 'E' + std::string(text.substr(sign));
}

template <class Number>
std::optional<Number> realFrom(std::string_view text) {
  text = withoutPlus(trimmed(text));
  if (const std::optional<Number> value = parse<Number>(text)) return value;
  return parse<Number>(withExponentLetter(text));
}

}  // namespace

std::optional<int> integerFrom(std::string_view text) {
  text = withoutPlus(trimmed(text));
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> numberFrom(std::string_view text) { return realFrom<double>(text); }

std::optional<float> floatFrom(std::string_view text) { return realFrom<float>(text); }

std::string upperCased(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return std::toupper(c); });
  return upper;
}

namespace {

// How many bytes at the start of `text` are one character in UTF-8; 0 when they are none.
std::size_t utf8Length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  const unsigned first = byte(0);
  const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (length == 0 || first > 0xF4) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return 0;
  }
  // Overlong forms, surrogates and what lies beyond the last character.
  if ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F)) return 0;
  if ((first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F)) return 0;
  return length;
}

}  // namespace

std::string storableText(std::string_view text) {
  std::string storable;
  while (!text.empty()) {
    const std::size_t length = utf8Length(text);
    const auto first = static_cast<unsigned char>(text.front());
    if (length == 0) {
      storable += static_cast<char>(0xC0U | (first >> 6U));
      storable += static_cast<char>(0x80U | (first & 0x3FU));
    } else if (first < 0x20 || first == 0x7F) {
      storable += ' ';
    } else {
      storable += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return storable;
}

}  // namespace importers
