#include "importers/calculix/deck/deck_keyword.h"

#include <algorithm>
#include <utility>

#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

// Splits at commas outside of quotes; a quote that nothing closes quotes nothing.
std::vector<std::string_view> splitAtCommas(std::string_view text) {
  std::vector<std::string_view> items;
  bool quoted = false;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted && text.find('"', i + 1) != std::string_view::npos;
    if (text[i] != ',' || quoted) continue;
    items.push_back(trimmed(text.substr(begin, i - begin)));
    begin = i + 1;
  }
  items.push_back(trimmed(text.substr(begin)));
  return items;
}

std::string withoutBlanks(std::string_view text) {
  std::string dense(text);
  dense.erase(std::remove_if(dense.begin(), dense.end(), [](char c) { return c == ' ' || c == '\t'; }), dense.end());
  return dense;
}

}  // namespace

std::optional<std::string> Keyword::spelled(const std::string& parameter) const {
  const auto found = parameters.find(parameter);
  if (found == parameters.end() || found->second.empty()) return std::nullopt;
  return found->second;
}

std::optional<std::string> Keyword::value(const std::string& parameter) const {
  const std::optional<std::string> text = spelled(parameter);
  if (!text || withoutQuotes(*text).empty()) return std::nullopt;
  return withoutQuotes(*text);
}

std::string withoutQuotes(std::string_view text) {
  std::string plain(text);
  plain.erase(std::remove(plain.begin(), plain.end(), '"'), plain.end());
  return plain;
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
    keyword.parameters[upperCased(withoutBlanks(item.substr(0, equals)))] = std::string(trimmed(value));
  }
  return keyword;
}

std::vector<std::string_view> dataItems(std::string_view line) {
  std::vector<std::string_view> items = splitAtCommas(line);
  if (!items.empty() && items.back().empty()) items.pop_back();
  return items;
}

}  // namespace importers::calculix
