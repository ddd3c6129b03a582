#include "report/record_meanings.h"

#include <unordered_map>

#include "inspect/records.h"

namespace report {

namespace {

// All that any configuration can ask for.
ExtractionSwitches everything() {
  ExtractionSwitches switches;
  switches.mass = switches.history = switches.historyExtremes = true;
  switches.field = switches.allFieldOutputs = switches.fieldSets = switches.fieldComponents = true;
  switches.engineeringMin = switches.engineeringMax = switches.tensorInvariants = true;
  return switches;
}

RecordMeaning meaningOf(const inspect::Record& record) {
  RecordMeaning meaning;
  meaning.step = static_cast<std::int32_t>(record.step);
  if (record.kind != inspect::RecordKind::field) return meaning;
  meaning.frame = record.frame;
  meaning.field = record.field;
  meaning.quantity = record.quantity;
  if (record.set) meaning.set = record.set->tag;
  meaning.extreme = inspect::wordOf(record.extreme);
  return meaning;
}

}  // namespace

std::vector<RecordMeaning> recordMeanings(const std::shared_ptr<const odbstore::Reader>& reader,
                                          const std::vector<std::string>& names) {
  const inspect::RecordList records(reader, everything());
  std::unordered_map<std::string, std::size_t> met;
  std::vector<RecordMeaning> meanings;
  for (const std::string& name : names) {
    const std::vector<inspect::Record> found = records.find(name);
    const std::size_t turn = met[name]++;
    meanings.push_back(turn < found.size() ? meaningOf(found[turn]) : RecordMeaning{});
  }
  return meanings;
}

}  // namespace report
