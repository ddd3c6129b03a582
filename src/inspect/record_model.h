// What a list of records is made from. For records.cpp and record_lookup.cpp alone.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "inspect/field_shapes.h"
#include "inspect/records.h"

namespace inspect {

struct History {
  std::string_view region;
  std::string_view output;
  std::string label;  // empty for none
  std::string tail;   // of the name: the cleaned output and the label
  bool hasSamples = false;
};

// Of the mass properties that a step has; in the order of the records.
inline constexpr std::string_view kMassQuantities[] = {"Mass", "MassCenter", "InertiaCenter", "InertiaOrigin"};

// What is known of a step; what many runs do not ask for is found when it is.
class StepModel {
 public:
  // All live as long.
  StepModel(const odbstore::Reader& reader, std::size_t place, const ExtractionSwitches& switches, SetRows& rows);

  const std::shared_ptr<const odbstore::StoredStep>& stored() const { return stored_; }
  // The name as it stands in names of records, and in those of the mass.
  const std::string& cleaned() const { return cleaned_; }
  const std::string& massName() const { return massName_; }
  // Of kMassQuantities those that are there.
  const std::vector<std::string_view>& mass() const { return mass_; }
  const std::vector<History>& histories();
  // By name, bytes ascending.
  std::vector<FieldShapes>& fields();

 private:
  const odbstore::Reader& reader_;
  std::size_t place_;
  const ExtractionSwitches& switches_;
  SetRows& rows_;
  std::shared_ptr<const odbstore::StoredStep> stored_;
  std::string cleaned_;
  std::string massName_;
  std::vector<std::string_view> mass_;
  std::optional<std::vector<History>> histories_;
  std::optional<std::vector<FieldShapes>> fields_;
};

// Places in tables by names, several to a name.
using PlacesByName = std::unordered_map<std::string, std::vector<std::size_t>>;

// What a look-up by names needs of a step.
struct StepIndex {
  PlacesByName fields;
  PlacesByName histories;                            // by their tails
  std::unordered_map<int, std::vector<int>> frames;  // by increment
};

class RecordModel {
 public:
  RecordModel(std::shared_ptr<const odbstore::Reader> database, const ExtractionSwitches& wanted);

  // Tells `rows` of the locations of all fields that are taken, so that the labels of a set are read once.
  void addLocations();

  const std::shared_ptr<const odbstore::Reader> reader;
  const ExtractionSwitches switches;
  const std::vector<ModelSet> sets;
  SetRows rows;
  std::vector<StepModel> steps;
  std::vector<std::shared_ptr<const odbstore::StoredStep>> storedSteps;

  // Of the look-up; empty until the first one.
  struct Index {
    PlacesByName steps;
    PlacesByName massSteps;
    PlacesByName sets;
    std::vector<std::optional<StepIndex>> ofSteps;
  };
  std::optional<Index> index;

 private:
  bool knowsLocations_ = false;
};

// The beginning of a record of a step.
Record recordOf(const RecordModel& model, std::size_t step, RecordKind kind);
Record massRecord(const RecordModel& model, std::size_t step, std::string_view quantity);
// `extreme` is none for the history as a whole.
Record historyRecord(const RecordModel& model, std::size_t step, const History& history, Extreme extreme);
// The extremes of a history that are written, none among them for the whole, in their order.
std::vector<Extreme> extremesOf(const History& history, const ExtractionSwitches& switches);
// "__History__", "__History_Max__", "__History_Min__".
std::string_view historyWord(Extreme extreme);

}  // namespace inspect
