#include "locate_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <tuple>

#include "base/control_characters.h"
#include "base/file_error.h"
#include "chosen_records.h"
#include "driver/read_configuration.h"
#include "inspect/open_database.h"
#include "inspect/places/locator.h"
#include "located_text.h"
#include "tool/console.h"

namespace inspect {

namespace {

// Without a configuration every record may be asked for.
ExtractionSwitches switchesOf(const LocateOptions& options) {
  ExtractionSwitches switches;
  if (!options.configuration.empty()) {
    readConfiguration(options.configuration, switches);
    return switches;
  }
  switches.mass = switches.history = switches.historyExtremes = switches.field = switches.allFieldOutputs = true;
  switches.fieldSets = switches.fieldComponents = switches.tensorInvariants = true;
  switches.engineeringMax = switches.engineeringMin = true;
  return switches;
}

bool isExtreme(const Record& record) { return record.kind != RecordKind::mass && record.extreme != Extreme::none; }

// A meaning of a chosen name, by their places.
struct Task {
  std::size_t chosen;
  std::size_t meaning;
};

// Those of one field and frame, then set, come one after the other, since a field is read once for them.
std::vector<Task> tasksOf(const std::vector<ChosenRecord>& chosen) {
  std::vector<Task> tasks;
  for (std::size_t c = 0; c < chosen.size(); ++c) {
    for (std::size_t m = 0; m < chosen[c].meanings.size(); ++m) {
      if (isExtreme(chosen[c].meanings[m])) tasks.push_back({c, m});
    }
  }
  const auto key = [&](const Task& task) {
    const Record& record = chosen[task.chosen].meanings[task.meaning];
    return std::tuple(record.step, record.frame, record.field, record.set, record.quantity);
  };
  std::stable_sort(tasks.begin(), tasks.end(), [&](const Task& a, const Task& b) { return key(a) < key(b); });
  return tasks;
}

Located locate(Locator& locator, const RecordList& records, const Record& record, const LocateOptions& options) {
  Located located = {record, locator.locate(record, options.next), {}};
  if (!options.isOverTime || record.kind != RecordKind::field) return located;
  const std::vector<odbstore::FrameInfo> frames = records.steps()[record.step]->frames();
  for (const int frame : locator.framesOf(record)) {
    const odbstore::FrameInfo& info = frames[static_cast<std::size_t>(frame)];
    located.overTime.push_back({info.incrementNumber, info.value, locator.locateIn(record, frame, 0)});
  }
  return located;
}

// Says what cannot be located. Of records that a file has without a name being asked for, those that are no extremes
// are nothing to speak of.
bool complainOf(const ChosenRecord& chosen, bool isAskedFor) {
  const std::string name = base::escaped(chosen.name);
  if (chosen.meanings.empty()) {
    tool::complain(name + ": is not a record of this database");
    return true;
  }
  if (std::any_of(chosen.meanings.begin(), chosen.meanings.end(), isExtreme) || !isAskedFor) return false;
  tool::complain(name + ": is not an extreme");
  return true;
}

}  // namespace

int locateRecords(const LocateOptions& options) {
  const std::shared_ptr<const odbstore::Reader> database = openDatabase(options.database);
  const ExtractionSwitches switches = switchesOf(options);
  const RecordList records(database, switches);
  const std::vector<ChosenRecord> chosen = chooseRecords(options, records);
  Locator locator(database, switches);
  bool isAnyMissing = false;
  for (const ChosenRecord& record : chosen) isAnyMissing = complainOf(record, !options.names.empty()) || isAnyMissing;
  std::vector<std::vector<std::string>> texts(chosen.size());
  for (std::size_t c = 0; c < chosen.size(); ++c) texts[c].resize(chosen[c].meanings.size());
  for (const Task& task : tasksOf(chosen)) {
    const ChosenRecord& record = chosen[task.chosen];
    const Located located = locate(locator, records, record.meanings[task.meaning], options);
    if (!located.found.hasValue()) {
      tool::complain(base::escaped(record.name) + ": has no value");
      isAnyMissing = true;
    }
    texts[task.chosen][task.meaning] = options.isJson ? jsonOf(record, located) : textOf(record, located);
  }
  bool isFirst = true;
  if (options.isJson) tool::print("{\"records\": [");
  for (const std::vector<std::string>& meanings : texts) {
    for (const std::string& text : meanings) {
      if (text.empty()) continue;
      if (!isFirst) tool::print(options.isJson ? ",\n" : "\n");
      tool::print(text);
      isFirst = false;
    }
  }
  if (options.isJson) tool::print("]}\n");
  tool::finishOutput();
  return isAnyMissing ? kNotLocated : 0;
}

}  // namespace inspect
