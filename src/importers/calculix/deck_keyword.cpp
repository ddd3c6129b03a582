#include "importers/calculix/deck_keyword.h"

#include <algorithm>
#include <array>
#include <utility>

#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

// Splits at commas outside of quotes.
std::vector<std::string_view> splitAtCommas(std::string_view text) {
  std::vector<std::string_view> items;
  bool quoted = false;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (text[i] != ',' || quoted) continue;
    items.push_back(trimmed(text.substr(begin, i - begin)));
    begin = i + 1;
  }
  items.push_back(trimmed(text.substr(begin)));
  return items;
}

std::string withoutQuotes(std::string_view text) {
  std::string plain(text);
  plain.erase(std::remove(plain.begin(), plain.end(), '"'), plain.end());
  return plain;
}

std::string withoutBlanks(std::string_view text) {
  std::string dense(text);
  dense.erase(std::remove_if(dense.begin(), dense.end(), [](char c) { return c == ' ' || c == '\t'; }), dense.end());
  return dense;
}

}  // namespace

std::optional<std::string> Keyword::value(const std::string& parameter) const {
  const auto found = parameters.find(parameter);
  if (found == parameters.end() || found->second.empty()) return std::nullopt;
  return found->second;
}

bool isComment(std::string_view line) { return line.substr(0, 2) == "**"; }

bool isKeyword(std::string_view line) { return !line.empty() && line.front() == '*' && !isComment(line); }

Keyword parseKeyword(std::string_view line) {
  Keyword keyword;
  bool isFirst = true;
  for (const std::string_view item : splitAtCommas(line.substr(1))) {
    if (std::exchange(isFirst, false)) {
      keyword.name = upperCased(withoutBlanks(item));
      continue;
    }
    const std::size_t equals = item.find('=');
    const std::string_view value = equals == std::string_view::npos ? std::string_view() : item.substr(equals + 1);
    keyword.parameters[upperCased(withoutBlanks(item.substr(0, equals)))] = withoutQuotes(trimmed(value));
  }
  return keyword;
}

std::vector<std::string_view> dataItems(std::string_view line) {
  std::vector<std::string_view> items = splitAtCommas(line);
  if (!items.empty() && items.back().empty()) items.pop_back();
  return items;
}

int nodesOfElementType(std::string_view type) {
  // The longer names first: a type is known by how it starts.
  static constexpr std::array<std::pair<std::string_view, int>, 42> starts = {{
      {"C3D20", 20},  {"C3D15", 15},  {"C3D10", 10},  {"C3D8", 8},    {"C3D6", 6}, {"C3D4", 4},   {"F3D8", 8},
      {"F3D6", 6},    {"F3D4", 4},    {"CPS3", 3},    {"CPS4", 4},    {"CPS6", 6}, {"CPS8", 8},   {"CPE3", 3},
      {"CPE4", 4},    {"CPE6", 6},    {"CPE8", 8},    {"CAX3", 3},    {"CAX4", 4}, {"CAX6", 6},   {"CAX8", 8},
      {"M3D3", 3},    {"M3D4", 4},    {"M3D6", 6},    {"M3D8", 8},    {"S3", 3},   {"S4", 4},     {"S6", 6},
      {"S8", 8},      {"B31", 2},     {"B32", 3},     {"T3D2", 2},    {"T3D3", 3}, {"GAPUNI", 2}, {"DASHPOTA", 2},
      {"SPRINGA", 2}, {"SPRING1", 1}, {"SPRING2", 2}, {"DCOUP3D", 1}, {"MASS", 1}, {"T2D2", 2},   {"B21", 2},
  }};
  for (const auto& [start, nodes] : starts) {
    if (type.substr(0, start.size()) == start) return nodes;
  }
  // The element of a flow network.
  return type == "D" ? 3 : 0;
}

}  // namespace importers::calculix
