#include "batch/collect/record_columns.h"

#include <fnmatch.h>

#include <algorithm>

namespace batch {

RecordColumns::Entry& RecordColumns::entryOf(std::string_view name) {
  const auto known = entries_.find(name);
  if (known != entries_.end()) return known->second;
  std::string text(name);
  const auto matches = [&](const std::string& pattern) { return ::fnmatch(pattern.c_str(), text.c_str(), 0) == 0; };
  Entry entry;
  entry.isWanted = patterns_.empty() || std::any_of(patterns_.begin(), patterns_.end(), matches);
  return entries_.emplace(std::move(text), std::move(entry)).first->second;
}

// How often the name has stood in this row; counts it.
std::size_t RecordColumns::timesBefore(Entry& entry) const {
  if (entry.row != row_) entry.times = 0;
  entry.row = row_;
  return entry.times++;
}

std::optional<std::size_t> RecordColumns::knownColumnOf(std::string_view name) {
  Entry& entry = entryOf(name);
  if (!entry.isWanted) return std::nullopt;
  const std::size_t before = timesBefore(entry);
  return before < entry.columns.size() ? std::optional(entry.columns[before]) : std::nullopt;
}

std::optional<std::size_t> RecordColumns::columnOf(std::string_view name) {
  Entry& entry = entryOf(name);
  if (!entry.isWanted) return std::nullopt;
  const std::size_t before = timesBefore(entry);
  if (before == entry.columns.size()) {
    entry.columns.push_back(names_.size());
    names_.push_back(std::string(name) + (before == 0 ? "" : "#" + std::to_string(before + 1)));
  }
  return entry.columns[before];
}

}  // namespace batch
