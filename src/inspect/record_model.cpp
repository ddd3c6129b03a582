#include "inspect/record_model.h"

#include <algorithm>

#include "odbaccess/odb_String.h"
#include "odbstore/database_file.h"
#include "result/configuration_keywords.h"
#include "result/record_name.h"

namespace inspect {

namespace {

// What a database says of a step without mass information.
constexpr double kNoMass = -1.0;

std::string cleanedText(std::string_view name) { return cleanedName(odb_String(name)); }

std::vector<std::string_view> massOf(const odbstore::StepInfo& info) {
  std::vector<std::string_view> there;
  if (info.mass == kNoMass) return there;
  const bool isThere[] = {true, !info.massCenter.empty(), !info.inertiaAboutCenter.empty(),
                          !info.inertiaAboutOrigin.empty()};
  for (std::size_t i = 0; i < std::size(isThere); ++i) {
    if (isThere[i]) there.push_back(kMassQuantities[i]);
  }
  return there;
}

// The last of node, element, integration point, section point and set that is there. The thresholds differ.
std::string labelOf(const odbstore::Catalog& catalog, flatbuffers::uoffset_t region) {
  const odbstore::columns::HistoryRegions& regions = *catalog.columns().regions();
  std::string label;
  const auto take = [&](bool isThere, int number) {
    if (isThere) label = std::to_string(number);
  };
  take(regions.node()->Get(region) >= 0, regions.node()->Get(region));
  take(regions.element()->Get(region) >= 0, regions.element()->Get(region));
  take(regions.integrationPoint()->Get(region) != 0, regions.integrationPoint()->Get(region));
  take(regions.sectionPoint()->Get(region) > 0, regions.sectionPoint()->Get(region));
  const std::string_view set = catalog.text(regions.set()->Get(region));
  return set.empty() ? label : std::string(set);
}

}  // namespace

StepModel::StepModel(const odbstore::Reader& reader, std::size_t place, const ExtractionSwitches& switches,
                     SetRows& rows)
    : reader_(reader), place_(place), switches_(switches), rows_(rows), stored_(reader.stepAt(place)) {
  cleaned_ = cleanedText(stored_->name());
  massName_ = stored_->name();
  std::replace(massName_.begin(), massName_.end(), '-', '_');
  mass_ = massOf(stored_->info());
}

const std::vector<History>& StepModel::histories() {
  if (histories_) return *histories_;
  histories_.emplace();
  const odbstore::Catalog& catalog = reader_.file()->catalog();
  const odbstore::columns::HistoryRegions& regions = *catalog.columns().regions();
  const odbstore::columns::HistoryOutputs& outputs = *catalog.columns().outputs();
  const odbstore::Places all = odbstore::Catalog::placesOf(catalog.columns().steps()->regionEnd(), place_);
  for (std::size_t region = all.first; region < all.end; ++region) {
    const auto r = static_cast<flatbuffers::uoffset_t>(region);
    const std::string label = labelOf(catalog, r);
    const odbstore::Places ofRegion = odbstore::Catalog::placesOf(regions.outputEnd(), region);
    for (std::size_t output = ofRegion.first; output < ofRegion.end; ++output) {
      const auto o = static_cast<flatbuffers::uoffset_t>(output);
      const std::string_view name = catalog.text(outputs.name()->Get(o));
      histories_->push_back({catalog.text(regions.name()->Get(r)), name, label,
                             cleanedText(name) + (label.empty() ? "" : "_" + label), outputs.samples()->Get(o) > 0});
    }
  }
  return *histories_;
}

std::vector<FieldShapes>& StepModel::fields() {
  if (fields_) return *fields_;
  fields_.emplace();
  fields_->reserve(stored_->fields().size());
  for (const odbstore::StoredField& field : stored_->fields()) fields_->emplace_back(field, switches_, rows_);
  return *fields_;
}

RecordModel::RecordModel(std::shared_ptr<const odbstore::Reader> database, const ExtractionSwitches& wanted)
    : reader(std::move(database)), switches(wanted), sets(modelSets(*reader->file())), rows(reader->file(), sets) {
  const std::size_t count = reader->file()->catalog().columns().steps()->name()->size();
  steps.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    steps.emplace_back(*reader, i, switches, rows);
    storedSteps.push_back(steps.back().stored());
  }
}

void RecordModel::addLocations() {
  const bool areSetsVisited = switches.field && (switches.fieldSets || switches.tensorInvariants);
  if (knowsLocations_ || !areSetsVisited) return;
  knowsLocations_ = true;
  for (StepModel& step : steps) {
    for (const FieldShapes& shapes : step.fields()) {
      if (!wantsFieldOutput(switches, shapes.field().info.description)) continue;
      for (const odbstore::StoredBlock& block : shapes.field().blocks) rows.add(block.location());
    }
  }
}

Record recordOf(const RecordModel& model, std::size_t step, RecordKind kind) {
  Record record;
  record.kind = kind;
  record.step = step;
  record.stepName = model.storedSteps[step]->name();
  return record;
}

Record massRecord(const RecordModel& model, std::size_t step, std::string_view quantity) {
  Record record = recordOf(model, step, RecordKind::mass);
  record.quantity = quantity;
  return record;
}

Record historyRecord(const RecordModel& model, std::size_t step, const History& history, Extreme extreme) {
  Record record = recordOf(model, step, RecordKind::history);
  record.region = history.region;
  record.output = history.output;
  record.label = history.label;
  record.extreme = extreme;
  return record;
}

std::vector<Extreme> extremesOf(const History& history, const ExtractionSwitches& switches) {
  std::vector<Extreme> extremes;
  if (switches.history) extremes.push_back(Extreme::none);
  if (switches.historyExtremes && history.hasSamples) extremes.insert(extremes.end(), {Extreme::max, Extreme::min});
  return extremes;
}

std::string_view historyWord(Extreme extreme) {
  if (extreme == Extreme::none) return "__History__";
  return extreme == Extreme::max ? "__History_Max__" : "__History_Min__";
}

}  // namespace inspect
