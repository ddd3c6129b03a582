// Parses the lines of a CalculiX deck.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace importers::calculix {

// A line such as `*NSET, NSET=Top face, GENERATE`.
struct Keyword {
  std::string name;                               // in capitals, without star and blanks
  std::map<std::string, std::string> parameters;  // by name in capitals; values as spelled

  bool has(const std::string& parameter) const { return parameters.contains(parameter); }
  // The value of a parameter as spelled, with its quotes; nothing when it is absent or empty.
  std::optional<std::string> spelled(const std::string& parameter) const;
  // The same without quotes.
  std::optional<std::string> value(const std::string& parameter) const;
};

std::string withoutQuotes(std::string_view text);

bool isComment(std::string_view line);
bool isKeyword(std::string_view line);

// `line` must be a keyword line.
Keyword parseKeyword(std::string_view line);

// The items of a data line between commas, trimmed. An empty last one, after a comma at the end, is left out.
std::vector<std::string_view> dataItems(std::string_view line);

}  // namespace importers::calculix
