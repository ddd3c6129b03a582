#include "importers/text_fields.h"

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

// Reads a number whose exponent may have lost its letter.
std::optional<double> numberWithBareExponent(std::string_view text) {
  const std::size_t sign = text.find_last_of("+-");
  if (sign == std::string_view::npos || sign == 0) return std::nullopt;
  const char before = text[sign - 1];
  if (std::isdigit(static_cast<unsigned char>(before)) == 0 && before != '.') return std::nullopt;
  std::string mended(text.substr(0, sign));
  mended += 'E';
  mended += text.substr(sign);
  return numberFrom(mended);
}

// What a number beyond the range of doubles stands for.
double beyondRange(std::string_view text) {
  const std::size_t mark = text.find_first_of("eE");
  const bool isSmall = mark != std::string_view::npos ? text.find('-', mark) != std::string_view::npos
                                                      : text.find_first_of("123456789") > text.find('.');
  if (isSmall) return 0.0;
  const double infinity = std::numeric_limits<double>::infinity();
  return text.front() == '-' ? -infinity : infinity;
}

}  // namespace

std::optional<int> integerFrom(std::string_view text) {
  text = withoutPlus(trimmed(text));
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> numberFrom(std::string_view text) {
  text = withoutPlus(trimmed(text));
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end == text.data() + text.size() && !text.empty()) {
    if (error == std::errc()) return value;
    if (error == std::errc::result_out_of_range) return beyondRange(text);
  }
  return numberWithBareExponent(text);
}

std::string upperCased(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return std::toupper(c); });
  return upper;
}

}  // namespace importers
