#include "inspect/repeated_names.h"

#include <algorithm>
#include <functional>
#include <unordered_set>

#include "odbstore/stored_step.h"

namespace inspect {

namespace {

// So many names are made in a second or so.
constexpr std::uint64_t kMostRecords = 2'000'000;

using Hash = std::hash<std::string>;

// Calls take(record) for all records, or of frames that are alike for one.
void forEachOf(const RecordList& records, bool isWhole, const std::function<void(const Record&)>& take) {
  records.forEach(
      [&](const Record& record) {
        take(record);
        return true;
      },
      isWhole ? RecordList::Frames::all : RecordList::Frames::different);
}

}  // namespace

RepeatedNames repeatedNames(const RecordList& records, std::size_t most) {
  RepeatedNames repeated;
  repeated.isWhole = records.count().all() <= kMostRecords;
  std::vector<std::size_t> hashes;
  forEachOf(records, repeated.isWhole, [&](const Record& record) { hashes.push_back(Hash()(records.nameOf(record))); });
  std::sort(hashes.begin(), hashes.end());
  std::unordered_set<std::size_t> suspects;
  for (std::size_t i = 1; i < hashes.size(); ++i) {
    if (hashes[i] == hashes[i - 1]) suspects.insert(hashes[i]);
  }
  if (suspects.empty()) return repeated;
  std::unordered_set<std::string> known;
  forEachOf(records, repeated.isWhole, [&](const Record& record) {
    std::string name = records.nameOf(record);
    if (!suspects.contains(Hash()(name)) || !known.insert(name).second) return;
    std::vector<Record> all = records.find(name);
    if (all.size() < 2) return;
    ++repeated.count;
    if (repeated.first.size() < most) repeated.first.push_back({std::move(name), std::move(all)});
  });
  return repeated;
}

}  // namespace inspect
