#include "result/configuration_keywords.h"

#include <locale.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>

void applySwitchKeywords(std::string_view line, ExtractionSwitches& switches) {
  for (const SwitchKeyword& keyword : kSwitchKeywords) {
    if (line.find(keyword.text) != std::string_view::npos) switches.*keyword.target = keyword.value;
  }
}

bool wantsFieldOutput(const ExtractionSwitches& switches, std::string_view description) {
  if (switches.wantsAllFieldOutputs()) return true;
  return std::any_of(kDescriptionKeywords.begin(), kDescriptionKeywords.end(), [&](const DescriptionKeyword& keyword) {
    return switches.*keyword.target && description.find(keyword.word) != std::string_view::npos;
  });
}

double leadingNumber(const std::string& text) {
  constexpr const char* kDigits = "0123456789";
  const std::size_t begin = text.find_first_not_of(" \t\n\v\f\r");
  if (begin == std::string::npos) return 0.0;
  const auto digitsFrom = [&](std::size_t at) {
    const std::size_t end = text.find_first_not_of(kDigits, at);
    return end == std::string::npos ? text.size() : end;
  };
  const auto isOneOf = [&](std::size_t at, const char* characters) {
    return at < text.size() && std::string_view(characters).find(text[at]) != std::string_view::npos;
  };
  const std::size_t whole = isOneOf(begin, "+-") ? begin + 1 : begin;
  std::size_t end = digitsFrom(whole);
  std::size_t digits = end - whole;
  if (isOneOf(end, ".")) {
    const std::size_t fraction = digitsFrom(end + 1);
    digits += fraction - (end + 1);
    end = fraction;
  }
  if (digits == 0) return 0.0;
  if (isOneOf(end, "eE")) {
    const std::size_t exponent = isOneOf(end + 1, "+-") ? end + 2 : end + 1;
    if (digitsFrom(exponent) > exponent) end = digitsFrom(exponent);
  }
  static const locale_t classic = ::newlocale(LC_ALL_MASK, "C", nullptr);
  return ::strtod_l(text.substr(begin, end - begin).c_str(), nullptr, classic);
}
