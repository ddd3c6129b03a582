#include "report/record_meanings.h"

#include <fstream>
#include <unordered_map>

#include "base/file_error.h"
#include "driver/read_configuration.h"
#include "inspect/places/locator.h"
#include "inspect/records.h"

namespace report {

namespace {

// All names that any configuration can give.
ExtractionSwitches everything() {
  ExtractionSwitches switches;
  switches.mass = switches.history = switches.historyExtremes = true;
  switches.field = switches.allFieldOutputs = switches.fieldSets = switches.fieldComponents = true;
  switches.engineeringMin = switches.engineeringMax = switches.tensorInvariants = true;
  return switches;
}

std::optional<ExtractionSwitches> switchesOf(const std::string& configuration) {
  if (configuration.empty()) return std::nullopt;
  if (!std::ifstream(configuration)) throw base::NoFileError(configuration, "cannot be read");
  ExtractionSwitches switches;
  readConfiguration(configuration, switches);
  return switches;
}

bool isEngineering(inspect::Extreme extreme) {
  return extreme == inspect::Extreme::engineeringMax || extreme == inspect::Extreme::engineeringMin;
}

Place placeOf(const inspect::RankedPlace& ranked, double value, const inspect::ModelMesh& mesh) {
  Place place;
  place.value = value;
  place.instance = ranked.instance;
  place.node = ranked.node;
  place.element = ranked.element;
  place.integrationPoint = ranked.integrationPoint > 0 ? ranked.integrationPoint : -1;
  if (ranked.node >= 0) place.point = mesh.pointOf(ranked.instance, ranked.node);
  if (ranked.element >= 0) place.cell = mesh.cellOf(ranked.instance, ranked.element);
  return place;
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

struct RecordMeanings::Records {
  explicit Records(std::shared_ptr<const odbstore::Reader> reader)
      : database(std::move(reader)), list(database, everything()) {}

  std::shared_ptr<const odbstore::Reader> database;
  inspect::RecordList list;
  std::vector<std::optional<inspect::Record>> found;  // of each name
};

RecordMeanings::RecordMeanings(std::shared_ptr<const odbstore::Reader> reader, const std::vector<std::string>& names)
    : records_(std::make_unique<Records>(std::move(reader))) {
  std::unordered_map<std::string, std::size_t> met;
  for (const std::string& name : names) {
    const std::vector<inspect::Record> found = records_->list.find(name);
    const std::size_t turn = met[name]++;
    const bool isKnown = turn < found.size();
    records_->found.push_back(isKnown ? std::optional(found[turn]) : std::nullopt);
    meanings_.push_back(isKnown ? meaningOf(found[turn]) : RecordMeaning{});
  }
}

RecordMeanings::~RecordMeanings() = default;

void RecordMeanings::locate(const inspect::ModelMesh& mesh, const std::string& configuration,
                            const std::function<bool(const RecordMeaning&)>& isWanted) {
  const std::optional<ExtractionSwitches> switches = switchesOf(configuration);
  inspect::Locator locator(records_->database, switches.value_or(everything()));
  for (std::size_t i = 0; i < meanings_.size(); ++i) {
    const std::optional<inspect::Record>& record = records_->found[i];
    if (!record || record->kind != inspect::RecordKind::field || !isWanted(meanings_[i])) continue;
    if (isEngineering(record->extreme) && !switches) continue;
    const inspect::LocatedExtreme located = locator.locate(*record, 1);
    if (!located.places.empty()) meanings_[i].place = placeOf(located.places.front().place, located.value, mesh);
  }
}

}  // namespace report
