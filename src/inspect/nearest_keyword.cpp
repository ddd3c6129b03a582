#include "inspect/nearest_keyword.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "result/configuration_keywords.h"

namespace inspect {

namespace {

std::string inCapitals(std::string_view text) {
  std::string capitals(text);
  for (char& c : capitals) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return capitals;
}

}  // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      const bool isSwapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isSwapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row[b.size()];
}

NearestKeyword nearestKeyword(std::string_view word) {
  const std::string capitals = inCapitals(word);
  // "STRESS" is meant for EXTRACT_STRESS, whatever is fewer letters away.
  const auto rankOf = [&](const NearestKeyword& near) {
    const bool isPart = near.keyword.find(capitals) != std::string_view::npos;
    return std::pair(near.distance > 1 && !isPart, near.distance);
  };
  NearestKeyword nearest{kPercentageKeyword, editDistance(capitals, kPercentageKeyword)};
  for (const SwitchKeyword& keyword : kSwitchKeywords) {
    const NearestKeyword candidate{keyword.text, editDistance(capitals, keyword.text)};
    if (rankOf(candidate) < rankOf(nearest)) nearest = candidate;
  }
  return nearest;
}

}  // namespace inspect
