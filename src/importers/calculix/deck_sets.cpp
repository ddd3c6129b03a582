#include "importers/calculix/deck_sets.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "importers/calculix/deck_keyword.h"
#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

// More members than any model has: a damaged GENERATE line shall not fill the memory.
constexpr std::int64_t kLargestRange = 100'000'000;

bool looksLikeNumber(std::string_view item) {
  return item.find_first_of("0123456789+-.") == 0 && item.find_first_of("0123456789") != std::string_view::npos;
}

}  // namespace

void DeckSet::addName(const std::string& name) {
  if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
}

void DeckSet::finish() {
  std::sort(labels.begin(), labels.end());
  labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
}

std::string canonicalName(std::string_view name) {
  // Two ways to write a letter are one name in the database.
  std::string canonical = upperCased(storableText(name));
  std::erase_if(canonical, [](char c) { return c == ' ' || c == '\t' || c == '"'; });
  return canonical;
}

int labelFrom(std::string_view item, const LineReader& lines) {
  const std::optional<int> value = integerFrom(item);
  if (!value) lines.fail(fmt::format("\"{}\" is not a label", storableText(item)));
  return *value;
}

double realFrom(std::string_view item, const LineReader& lines) {
  std::string text(item);
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == 'd' || c == 'D'; }, 'E');
  const std::optional<double> value = numberFrom(text);
  if (!value) lines.fail(fmt::format("\"{}\" is not a number", storableText(item)));
  return *value;
}

DeckSet& DeckSets::open(const std::string& name, const LineReader& lines) {
  const std::string canonical = canonicalName(name);
  if (canonical.empty()) lines.fail("the set has no name");
  const auto [known, isNew] = sets_.try_emplace(canonical);
  if (isNew) {
    known->second.place = placeIn(lines.path(), lines.lineNumber());
  }
  known->second.addName(storableText(name));
  return known->second;
}

void DeckSets::addMembers(DeckSet& set, std::string_view line, const LineReader& lines, const WarningSink& warn) const {
  for (const std::string_view item : dataItems(line)) {
    if (item.empty()) continue;
    if (const std::optional<int> label = integerFrom(item)) {
      set.labels.push_back(*label);
      continue;
    }
    const auto other = sets_.find(canonicalName(item));
    if (other == sets_.end()) {
      if (looksLikeNumber(item)) lines.fail(fmt::format("\"{}\" is neither a label nor a set", storableText(item)));
      warn(fmt::format("{}: warning: the set {} takes in {}, which is no set yet",
                       placeIn(lines.path(), lines.lineNumber()), set.names.front(), storableText(item)));
      continue;
    }
    const std::vector<int> members = other->second.labels;
    set.labels.insert(set.labels.end(), members.begin(), members.end());
  }
}

void DeckSets::addRange(DeckSet& set, std::string_view line, const LineReader& lines) {
  const std::vector<std::string_view> items = dataItems(line);
  if (items.size() > 3) lines.fail("GENERATE takes a first label, a last label and an increment");
  const std::int64_t first = labelFrom(items[0], lines);
  const std::int64_t last = items.size() > 1 ? labelFrom(items[1], lines) : first;
  const std::int64_t increment = items.size() > 2 ? labelFrom(items[2], lines) : 1;
  if (increment <= 0) lines.fail("the increment of GENERATE must be positive");
  if (last < first) lines.fail(fmt::format("GENERATE cannot run from {} down to {}", first, last));
  if ((last - first) / increment >= kLargestRange) {
    lines.fail(fmt::format("GENERATE makes more than {} labels", kLargestRange));
  }
  for (std::int64_t label = first; label <= last; label += increment) set.labels.push_back(static_cast<int>(label));
}

std::map<std::string, DeckSet> DeckSets::finish() {
  for (auto& [name, set] : sets_) set.finish();
  return std::move(sets_);
}

}  // namespace importers::calculix
