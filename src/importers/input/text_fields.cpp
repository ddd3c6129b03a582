#include "importers/input/text_fields.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

#include "base/control_characters.h"

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

// The text with the letter that its exponent has lost; empty if there is no such place.
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

std::string utf8Text(std::string_view text) {
  std::string good;
  while (!text.empty()) {
    const std::size_t length = base::utf8Length(text);
    const auto first = static_cast<unsigned char>(text.front());
    if (length == 0) {
      good += static_cast<char>(0xC0U | (first >> 6U));
      good += static_cast<char>(0x80U | (first & 0x3FU));
    } else {
      good += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return good;
}

std::string storableText(std::string_view text) {
  const std::string good = utf8Text(text);
  std::string storable;
  for (std::string_view rest = good; !rest.empty();) {
    const std::string_view character = rest.substr(0, base::utf8Length(rest));
    storable += base::hasControlCharacter(character) ? " " : character;
    rest.remove_prefix(character.size());
  }
  return storable;
}

}  // namespace importers
