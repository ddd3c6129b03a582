// Parses numbers and words in lines of text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace importers {

// `width` characters from column `column` (from 1, as formats are described), fewer at the end of the line.
constexpr std::string_view columns(std::string_view line, std::size_t column, std::size_t width) {
  return column > line.size() ? std::string_view() : line.substr(column - 1, width);
}

// Without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

// The whole text as a number, ignoring blanks around it; nothing if it is not a number or does not fit.
std::optional<int> integerFrom(std::string_view text);

// The same for a decimal number as solvers print it: also "INF", "NaN" and an exponent of three digits without its
// letter ("5.717277-124"). A number too small for a double is 0, one too large is infinite.
std::optional<double> numberFrom(std::string_view text);

// The float nearest to that number; 0 and infinite beyond the range of floats.
std::optional<float> floatFrom(std::string_view text);

std::string upperCased(std::string_view text);

// Text of unknown origin as UTF-8: valid UTF-8 is kept, any other byte above 127 is taken as Latin-1.
std::string utf8Text(std::string_view text);

// The same in a form that the database can store: control characters become blanks.
std::string storableText(std::string_view text);

}  // namespace importers
