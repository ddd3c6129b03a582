#include "tool/text_table.h"

#include <fmt/format.h>

#include <algorithm>

namespace tool {

namespace {

// All bytes but those that go on with a character.
std::size_t charactersOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string aligned(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const std::vector<std::string>& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], charactersOf(row[i]));
  }
  std::string text;
  for (const std::vector<std::string>& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      line.append(widths[i] - charactersOf(row[i]) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + '\n';
  }
  return text;
}

std::string runsOf(const std::set<int>& numbers) {
  std::string text;
  for (auto at = numbers.begin(); at != numbers.end();) {
    const int first = *at;
    int last = first;
    while (++at != numbers.end() && *at == last + 1) last = *at;
    text += (text.empty() ? "" : ",") + (first == last ? fmt::format("{}", first) : fmt::format("{}-{}", first, last));
  }
  return text;
}

}  // namespace tool
