#include "inspect/name_parts.h"

namespace inspect {

namespace {

ExtractionSwitches everything() {
  ExtractionSwitches switches;
  switches.mass = switches.history = switches.historyExtremes = true;
  switches.field = switches.allFieldOutputs = switches.fieldSets = switches.fieldComponents = true;
  switches.engineeringMin = switches.engineeringMax = switches.tensorInvariants = true;
  return switches;
}

}  // namespace

NameParts::NameParts(std::shared_ptr<const odbstore::Reader> database,
                     const std::optional<ExtractionSwitches>& switches) {
  lists_.push_back(std::make_unique<RecordList>(database, switches.value_or(everything())));
  if (switches) return;
  ExtractionSwitches listing = everything();
  listing.computeValues = false;
  lists_.push_back(std::make_unique<RecordList>(std::move(database), listing));
}

void NameParts::announce(std::string_view name) { ++names_[std::string(name)].times; }

const std::vector<Record>& NameParts::next(std::string_view name) {
  Name& known = names_[std::string(name)];
  const std::size_t place = known.met++;
  found_.clear();
  for (const std::unique_ptr<RecordList>& list : lists_) {
    if (found_.empty()) found_ = list->find(name);
  }
  if (found_.empty()) {
    ++unknown_;
  } else if (found_.size() == known.times) {
    found_ = {found_[place]};
  } else {
    ++ambiguous_;
  }
  return found_;
}

}  // namespace inspect
