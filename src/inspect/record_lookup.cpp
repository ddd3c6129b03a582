// Finds records by their names: makes every reading of a name that the names in the database allow, and keeps those
// that are records.

#include <algorithm>
#include <charconv>
#include <tuple>

#include "inspect/record_model.h"
#include "odbaccess/odb_String.h"
#include "odbstore/stored_step.h"
#include "result/record_name.h"

namespace inspect {

namespace {

constexpr std::string_view kSeparator = "__";
constexpr std::string_view kFrameWord = "__Frame_";

const std::vector<std::size_t>& placesOf(const PlacesByName& table, std::string_view name) {
  static const std::vector<std::size_t> none;
  const auto found = table.find(std::string(name));
  return found == table.end() ? none : found->second;
}

void makeIndex(RecordModel& model) {
  if (model.index) return;
  model.index.emplace();
  for (std::size_t i = 0; i < model.steps.size(); ++i) {
    model.index->steps[model.steps[i].cleaned()].push_back(i);
    model.index->massSteps[model.steps[i].massName()].push_back(i);
  }
  for (std::size_t i = 0; i < model.sets.size(); ++i) {
    if (!model.sets[i].isLeftOut) model.index->sets[model.sets[i].tag].push_back(i);
  }
  model.index->ofSteps.resize(model.steps.size());
}

const StepIndex& indexOf(RecordModel& model, std::size_t place) {
  std::optional<StepIndex>& index = model.index->ofSteps[place];
  if (index) return *index;
  index.emplace();
  StepModel& step = model.steps[place];
  for (std::size_t i = 0; i < step.fields().size(); ++i) {
    index->fields[cleanedName(odb_String(step.fields()[i].field().name))].push_back(i);
  }
  for (std::size_t i = 0; i < step.histories().size(); ++i) {
    index->histories[step.histories()[i].tail].push_back(i);
  }
  for (int frame = 0; frame < step.stored()->frameCount(); ++frame) {
    index->frames[step.stored()->frame(frame).incrementNumber].push_back(frame);
  }
  return *index;
}

// A record and its place among all.
struct Found {
  std::tuple<std::size_t, RecordKind, int, std::size_t, std::size_t, std::size_t> place;
  Record record;
};

class LookUp {
 public:
  LookUp(RecordModel& model, std::string_view name) : model_(model), name_(name) {}

  std::vector<Record> run() {
    // Names of steps may hold "__" themselves.
    for (std::size_t at = name_.find(kSeparator); at != std::string_view::npos; at = name_.find(kSeparator, at + 1)) {
      const std::string_view rest = name_.substr(at);
      if (model_.switches.mass) readMass(name_.substr(0, at), rest.substr(kSeparator.size()));
      for (const std::size_t step : placesOf(model_.index->steps, name_.substr(0, at))) {
        readHistory(step, rest);
        if (model_.switches.field && rest.starts_with(kFrameWord)) readFrame(step, rest.substr(kFrameWord.size()));
      }
    }
    std::sort(found_.begin(), found_.end(), [](const Found& a, const Found& b) { return a.place < b.place; });
    std::vector<Record> records;
    for (Found& found : found_) records.push_back(found.record);
    return records;
  }

 private:
  void readMass(std::string_view stepName, std::string_view quantity) {
    for (const std::size_t step : placesOf(model_.index->massSteps, stepName)) {
      for (const std::string_view known : model_.steps[step].mass()) {
        if (known == quantity)
          found_.push_back({{step, RecordKind::mass, 0, 0, 0, 0}, massRecord(model_, step, known)});
      }
    }
  }

  void readHistory(std::size_t step, std::string_view rest) {
    for (const Extreme extreme : {Extreme::none, Extreme::max, Extreme::min}) {
      if (!rest.starts_with(historyWord(extreme))) continue;
      const std::string_view tail = rest.substr(historyWord(extreme).size());
      for (const std::size_t place : placesOf(indexOf(model_, step).histories, tail)) {
        const History& history = model_.steps[step].histories()[place];
        const std::vector<Extreme> written = extremesOf(history, model_.switches);
        if (std::find(written.begin(), written.end(), extreme) == written.end()) continue;
        found_.push_back({{step, RecordKind::history, 0, place, 0, static_cast<std::size_t>(extreme)},
                          historyRecord(model_, step, history, extreme)});
      }
    }
  }

  // What stands behind "__Frame_": the increment, then "", "__TOP" or "__I_1_TOP", then the field and its ending.
  void readFrame(std::size_t step, std::string_view rest) {
    int increment = 0;
    const auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), increment);
    const auto digits = static_cast<std::size_t>(end - rest.data());
    if (failure != std::errc() || std::to_string(increment) != rest.substr(0, digits)) return;
    const auto frames = indexOf(model_, step).frames.find(increment);
    if (frames == indexOf(model_, step).frames.end()) return;
    for (const Extreme extreme : {Extreme::max, Extreme::min, Extreme::engineeringMax, Extreme::engineeringMin}) {
      const std::string word = std::string(kSeparator).append(wordOf(extreme));
      if (!rest.ends_with(word)) continue;
      for (const std::string_view quantity : quantityTexts()) {
        const std::size_t length = word.size() + quantity.size();
        if (rest.size() < digits + length || !rest.substr(0, rest.size() - word.size()).ends_with(quantity)) continue;
        readRegion(step, frames->second, rest.substr(digits, rest.size() - digits - length),
                   rest.substr(rest.size() - length));
      }
    }
  }

  void readRegion(std::size_t step, const std::vector<int>& frames, std::string_view middle, std::string_view ending) {
    for (std::size_t at = middle.find(kSeparator); at != std::string_view::npos; at = middle.find(kSeparator, at + 1)) {
      const std::string_view field = middle.substr(at + kSeparator.size());
      for (const std::size_t place : placesOf(indexOf(model_, step).fields, field)) {
        if (at == 0) keep(step, frames, place, nullptr, ending);
        for (const std::size_t set : placesOf(model_.index->sets, middle.substr(0, at))) {
          keep(step, frames, place, &model_.sets[set], ending);
        }
      }
    }
  }

  void keep(std::size_t step, const std::vector<int>& frames, std::size_t field, const ModelSet* set,
            std::string_view text) {
    FieldShapes& shapes = model_.steps[step].fields()[field];
    for (const int frame : frames) {
      if (!shapes.field().existsIn(frame)) continue;
      const FieldShape& shape = shapes.in(frame);
      const std::size_t region = set == nullptr ? 0 : static_cast<std::size_t>(set - model_.sets.data()) + 1;
      const std::vector<Ending>& endings = set == nullptr ? shape.ofWholeModel() : shape.ofSet(region - 1);
      for (std::size_t i = 0; i < endings.size(); ++i) {
        if (endings[i].text != text) continue;
        found_.push_back({{step, RecordKind::field, frame, field, region, i},
                          fieldRecord(step, frame, shapes.field().name, set, endings[i])});
      }
    }
  }

  Record fieldRecord(std::size_t step, int frame, std::string_view field, const ModelSet* set, const Ending& ending) {
    Record record = recordOf(model_, step, RecordKind::field);
    const odbstore::FrameInfo info = model_.steps[step].stored()->frame(frame);
    record.frame = frame;
    record.increment = info.incrementNumber;
    record.frameValue = info.value;
    record.field = field;
    record.set = set;
    record.ending = ending.text;
    record.quantity = ending.quantity;
    record.extreme = ending.extreme;
    return record;
  }

  RecordModel& model_;
  std::string_view name_;
  std::vector<Found> found_;
};

}  // namespace

std::vector<Record> RecordList::find(std::string_view name) const {
  makeIndex(*model_);
  return LookUp(*model_, name).run();
}

}  // namespace inspect
