#include "inspect/records.h"

#include <unordered_map>
#include <utility>

#include "inspect/record_model.h"
#include "odbaccess/odb_String.h"
#include "result/record_name.h"

namespace inspect {

namespace {

using Take = std::function<bool(const Record&)>;

// One walk over all records, in the order of the extraction.
class Walk {
 public:
  Walk(RecordModel& model, const Take& take, RecordList::Frames frames)
      : model_(model), take_(take), isBrief_(frames == RecordList::Frames::different) {}

  std::optional<RunEnd> run() {
    if (isBrief_) countIncrements();
    for (std::size_t step = 0; goesOn_ && step < model_.steps.size(); ++step) visitStep(step);
    return end_;
  }

 private:
  void hand(const Record& record) { goesOn_ = goesOn_ && take_(record); }

  void visitStep(std::size_t place) {
    StepModel& step = model_.steps[place];
    const ExtractionSwitches& switches = model_.switches;
    if (switches.mass) {
      for (const std::string_view quantity : step.mass()) hand(massRecord(model_, place, quantity));
    }
    if (switches.history || switches.historyExtremes) visitHistories(place);
    if (!switches.field) return;
    const int frames = step.stored()->frameCount();
    alike_.clear();
    for (int frame = 0; goesOn_ && frame < frames; ++frame) {
      if (!isBrief_ || differs(step, frame)) visitFrame(place, frame);
    }
  }

  void countIncrements() {
    for (StepModel& step : model_.steps) {
      for (int i = 0; i < step.stored()->frameCount(); ++i) ++increments_[step.cleaned()][incrementOf(step, i)];
    }
  }

  static int incrementOf(const StepModel& step, int frame) { return step.stored()->frame(frame).incrementNumber; }

  // Whether the frame has something of its own.
  bool differs(StepModel& step, int frame) {
    std::vector<const FieldShape*> shapes;
    for (FieldShapes& field : step.fields()) {
      shapes.push_back(field.field().existsIn(frame) ? &field.in(frame) : nullptr);
    }
    const bool isNew = frame == 0 || shapes != alike_;
    alike_ = std::move(shapes);
    return isNew || increments_[step.cleaned()][incrementOf(step, frame)] > 1;
  }

  void visitHistories(std::size_t place) {
    for (const History& history : model_.steps[place].histories()) {
      if (!goesOn_) return;
      for (const Extreme extreme : extremesOf(history, model_.switches)) {
        hand(historyRecord(model_, place, history, extreme));
      }
    }
  }

  void visitFrame(std::size_t place, int frame) {
    StepModel& step = model_.steps[place];
    const odbstore::FrameInfo info = step.stored()->frame(frame);
    Record record = recordOf(model_, place, RecordKind::field);
    record.frame = frame;
    record.increment = info.incrementNumber;
    record.frameValue = info.value;
    for (FieldShapes& shapes : step.fields()) {
      if (!goesOn_) return;
      if (shapes.field().existsIn(frame)) visitField(shapes.in(frame), shapes.field().name, record);
    }
  }

  void visitField(const FieldShape& shape, std::string_view field, Record record) {
    record.field = field;
    record.set = nullptr;
    handAll(shape.ofWholeModel(), record);
    if (!shape.visitsSets()) return;
    for (std::size_t set = 0; goesOn_ && set < model_.sets.size(); ++set) {
      if (model_.sets[set].isLeftOut) continue;
      record.set = &model_.sets[set];
      if (shape.endsAt(set)) {
        end_ = RunEnd{record.step, record.frame, field, record.set};
        goesOn_ = false;
        return;
      }
      handAll(shape.ofSet(set), record);
    }
  }

  void handAll(const std::vector<Ending>& endings, Record record) {
    for (const Ending& ending : endings) {
      record.ending = ending.text;
      record.quantity = ending.quantity;
      record.extreme = ending.extreme;
      hand(record);
    }
  }

  RecordModel& model_;
  const Take& take_;
  bool isBrief_;
  std::unordered_map<std::string, std::unordered_map<int, int>> increments_;  // of steps by name: how many frames
  std::vector<const FieldShape*> alike_;                                      // of the last frame, by field
  bool goesOn_ = true;
  std::optional<RunEnd> end_;
};

// Adds the records of one field of one frame. False where the run ends there.
bool addField(const RecordModel& model, const FieldShape& shape, RecordList::Count& count) {
  count.wholeModel += shape.ofWholeModel().size();
  count.sets += shape.overSets(model.sets).records;
  return !shape.overSets(model.sets).end;
}

bool addFrames(RecordModel& model, std::size_t place, RecordList::Count& count) {
  StepModel& step = model.steps[place];
  for (int frame = 0; frame < step.stored()->frameCount(); ++frame) {
    for (FieldShapes& shapes : step.fields()) {
      if (!shapes.field().existsIn(frame)) continue;
      const FieldShape& shape = shapes.in(frame);
      if (addField(model, shape, count)) continue;
      count.end = RunEnd{place, frame, shapes.field().name, &model.sets[*shape.overSets(model.sets).end]};
      return false;
    }
  }
  return true;
}

}  // namespace

RecordList::RecordList(std::shared_ptr<const odbstore::Reader> database, const ExtractionSwitches& switches)
    : model_(std::make_unique<RecordModel>(std::move(database), switches)) {}

RecordList::~RecordList() = default;

const odbstore::Reader& RecordList::database() const { return *model_->reader; }

const std::vector<ModelSet>& RecordList::sets() const { return model_->sets; }

const std::vector<std::shared_ptr<const odbstore::StoredStep>>& RecordList::steps() const {
  return model_->storedSteps;
}

std::optional<RunEnd> RecordList::forEach(const Take& take, Frames frames) const {
  model_->addLocations();
  return Walk(*model_, take, frames).run();
}

RecordList::Count RecordList::count() const {
  model_->addLocations();
  Count count;
  for (std::size_t place = 0; place < model_->steps.size(); ++place) {
    StepModel& step = model_->steps[place];
    const ExtractionSwitches& switches = model_->switches;
    if (switches.mass) count.mass += step.mass().size();
    if (switches.history || switches.historyExtremes) {
      for (const History& history : step.histories()) count.histories += extremesOf(history, switches).size();
    }
    if (switches.field && !addFrames(*model_, place, count)) break;
  }
  return count;
}

std::string RecordList::nameOf(const Record& record) const {
  const StepModel& step = model_->steps[record.step];
  if (record.kind == RecordKind::mass) return step.massName() + "__" + std::string(record.quantity);
  std::string name = step.cleaned();
  if (record.kind == RecordKind::history) {
    name += historyWord(record.extreme);
    name += cleanedName(odb_String(record.output));
    if (!record.label.empty()) name.append("_").append(record.label);
    return name;
  }
  name += "__Frame_" + std::to_string(record.increment);
  if (record.set != nullptr) name += record.set->tag;
  name += "__" + cleanedName(odb_String(record.field));
  return name.append(record.ending);
}

}  // namespace inspect
