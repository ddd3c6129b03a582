#include "inspect/places/locator.h"

#include <algorithm>
#include <limits>
#include <tuple>

#include "inspect/mesh/model_mesh.h"
#include "odbaccess/odb_Exception.h"
#include "odbaccess/odb_of_reader.h"
#include "odbstore/database_file.h"
#include "reduce/engineering_extremes.h"

namespace inspect {

namespace {

using kernels::Order;

Order orderOf(const WantedValues& wanted) { return wanted.isMax() ? Order::descending : Order::ascending; }

// Whether the extraction, which starts from the lowest or highest finite number, takes a number.
bool isTaken(double value, const WantedValues& wanted) {
  constexpr double kHighest = std::numeric_limits<double>::max();
  return wanted.isMax() ? value > -kHighest : value < kHighest;
}

// The numbers of some blocks, row by row, for a selection to move.
std::vector<double> inRowOrder(const std::vector<RowValues>& blocks) {
  std::vector<double> numbers;
  for (const RowValues& block : blocks) {
    for (int row = 0; row < block.rows; ++row) numbers.push_back(block.of(row));
  }
  return numbers;
}

// What is selected from one array.
struct Selected {
  double value = 0.0;
  int aim = 0;
  Order order = Order::ascending;
};

}  // namespace

class Locator::Model {
 public:
  Model(std::shared_ptr<const odbstore::Reader> database, const ExtractionSwitches& switches)
      : reader_(std::move(database)), switches_(switches), odb_(odbOfReader(reader_)) {}

  LocatedExtreme locateField(const Record& record, int frame, std::size_t next);
  LocatedExtreme locateHistory(const Record& record);
  const odbstore::StoredStep& stepOf(const Record& record) {
    const std::string name(record.stepName);
    if (step_ == nullptr || step_->name() != name) step_ = reader_->step(name);
    return *step_;
  }
  std::string fileName() const { return reader_->file()->name(); }

 private:
  // What the field that is in memory is of.
  using FieldKey = std::tuple<std::string, int, std::string>;
  // And the numbers in memory, of that field.
  using ValuesKey = std::tuple<const ModelSet*, std::string_view, bool, bool>;

  const odb_FieldOutput& fieldOf(const Record& record, int frame);
  odb_Set setOf(const ModelSet& set);
  const odb_FieldOutput& subsetOf(const Record& record, int frame);
  const std::vector<RowValues>& valuesOf(const Record& record, int frame, const WantedValues& wanted);
  void locatePlain(const std::vector<RowValues>& blocks, const WantedValues& wanted, std::size_t next,
                   LocatedExtreme& found);
  void locateEngineering(const std::vector<RowValues>& blocks, const WantedValues& wanted, bool isWholeModel,
                         std::size_t next, LocatedExtreme& found);
  Selected select(const std::vector<RowValues>& blocks, const WantedValues& wanted, bool isMaxFirst) const;
  std::vector<LocatedPlace> withCoordinates(std::vector<RankedPlace> places);
  std::optional<std::array<double, 3>> coordinatesOf(const RankedPlace& place);

  std::shared_ptr<const odbstore::Reader> reader_;
  ExtractionSwitches switches_;
  odb_Odb odb_;
  std::shared_ptr<const odbstore::StoredStep> step_;
  FieldKey fieldKey_;
  std::optional<odb_FieldOutput> field_;
  const ModelSet* subsetOf_ = nullptr;
  std::optional<odb_FieldOutput> subset_;
  std::optional<ValuesKey> valuesKey_;
  std::vector<RowValues> values_;
  std::optional<ModelMesh> mesh_;
};

const odb_FieldOutput& Locator::Model::fieldOf(const Record& record, int frame) {
  const FieldKey key = {std::string(record.stepName), frame, std::string(record.field)};
  if (field_ && fieldKey_ == key) return *field_;
  valuesKey_.reset();
  subset_.reset();
  subsetOf_ = nullptr;
  field_.reset();
  // A copy of the frame, so that what it reads goes with it.
  const odb_Frame of = odb_.steps()[odb_String(std::get<0>(key))].frames().constGet(frame);
  field_ = of.fieldOutputs()[odb_String(std::get<2>(key))];
  fieldKey_ = key;
  return *field_;
}

odb_Set Locator::Model::setOf(const ModelSet& set) {
  const odb_String owner{std::string(set.owner)};
  odb_Assembly& assembly = odb_.rootAssembly();
  const odb_DiscreteEntity& entity = set.ownerKind == odbstore::OwnerKind::assembly
                                         ? static_cast<const odb_DiscreteEntity&>(assembly)
                                     : set.ownerKind == odbstore::OwnerKind::instance
                                         ? static_cast<const odb_DiscreteEntity&>(assembly.instances()[owner])
                                         : static_cast<const odb_DiscreteEntity&>(odb_.parts()[owner]);
  const bool isOfElements = set.kind == odbstore::SetKind::element;
  return (isOfElements ? entity.elementSets(false) : entity.nodeSets(false))[odb_String(std::string(set.name))];
}

const odb_FieldOutput& Locator::Model::subsetOf(const Record& record, int frame) {
  const odb_FieldOutput& field = fieldOf(record, frame);
  if (subset_ && subsetOf_ == record.set) return *subset_;
  subset_ = field.getSubset(setOf(*record.set));
  subsetOf_ = record.set;
  return *subset_;
}

std::optional<std::array<double, 3>> Locator::Model::coordinatesOf(const RankedPlace& place) {
  if (!mesh_) mesh_ = readMesh(*reader_);
  const auto at = [&](std::int64_t point) {
    const double* const first = &mesh_->coordinates[3 * static_cast<std::size_t>(point)];
    return std::array{first[0], first[1], first[2]};
  };
  if (place.node >= 0) {
    const std::int64_t point = mesh_->pointOf(place.instance, place.node);
    return point < 0 ? std::nullopt : std::optional(at(point));
  }
  const std::int64_t cell = mesh_->cellOf(place.instance, place.element);
  if (cell < 0) return std::nullopt;
  const std::span<const std::int64_t> points = mesh_->pointsOf(static_cast<std::size_t>(cell));
  std::array<double, 3> mean{};
  for (const std::int64_t point : points) {
    for (std::size_t k = 0; k < 3; ++k) mean[k] += at(point)[k] / static_cast<double>(points.size());
  }
  return mean;
}

std::vector<LocatedPlace> Locator::Model::withCoordinates(std::vector<RankedPlace> places) {
  std::vector<LocatedPlace> located;
  for (RankedPlace& place : places) {
    const std::optional<std::array<double, 3>> coordinates = coordinatesOf(place);
    located.push_back({std::move(place), coordinates});
  }
  return located;
}

void Locator::Model::locatePlain(const std::vector<RowValues>& blocks, const WantedValues& wanted, std::size_t next,
                                 LocatedExtreme& found) {
  std::vector<RankedPlace> places = firstPlaces(blocks, orderOf(wanted), next + 1);
  if (places.empty() || !isTaken(places.front().value, wanted)) return;
  found.value = places.front().value;
  found.equal = countPlaces(blocks, found.value);
  found.places = withCoordinates(std::move(places));
}

// The extraction selects the minimum first and the maximum in what that has moved, of tensor components over sets the
// other way round.
Selected Locator::Model::select(const std::vector<RowValues>& blocks, const WantedValues& wanted,
                                bool isMaxFirst) const {
  std::vector<double> numbers = inRowOrder(blocks);
  const std::span<double> all = numbers;
  const Order maxOrder = blocks.front().maxOrder;
  const auto take = [&](Order order) { return engineeringExtreme(all, switches_.percentage, order); };
  Selected selected;
  selected.aim = engineeringCount(static_cast<int>(numbers.size()), switches_.percentage);
  selected.order = wanted.isMax() ? maxOrder : Order::ascending;
  if (wanted.isMax() != isMaxFirst) {
    if (isMaxFirst ? switches_.engineeringMax : switches_.engineeringMin)
      take(isMaxFirst ? maxOrder : Order::ascending);
  }
  selected.value = take(selected.order);
  return selected;
}

// Over the whole model each block is selected from for itself; of what they give the most extreme counts.
void Locator::Model::locateEngineering(const std::vector<RowValues>& blocks, const WantedValues& wanted,
                                       bool isWholeModel, std::size_t next, LocatedExtreme& found) {
  std::vector<std::vector<RowValues>> arrays;
  if (isWholeModel) {
    for (const RowValues& block : blocks) {
      if (block.rows > 0) arrays.push_back({block});
    }
  } else if (std::any_of(blocks.begin(), blocks.end(), [](const RowValues& block) { return block.rows > 0; })) {
    arrays.push_back(blocks);
  }
  const bool isComponent =
      !wanted.quantity.empty() && wanted.quantity.find_first_not_of("0123456789") == std::string_view::npos;
  const bool isMaxFirst = !isWholeModel && isComponent && wanted.quantity.size() == 2;
  std::optional<Selected> best;
  const std::vector<RowValues>* from = nullptr;
  for (const std::vector<RowValues>& array : arrays) {
    const Selected selected = select(array, wanted, isMaxFirst);
    const bool isBetter = !best || (wanted.isMax() ? selected.value > best->value : selected.value < best->value);
    if (!isTaken(selected.value, wanted) || !isBetter) continue;
    best = selected;
    from = &array;
  }
  if (!best) return;
  found.value = best->value;
  found.aim = best->aim;
  found.isAscending = best->order == Order::ascending;
  found.before = countRowsBefore(*from, best->value, best->order);
  found.equal = countPlaces(*from, best->value);
  found.places = withCoordinates(firstPlaces(*from, best->order, next + 1, best->value));
  std::vector<RankedPlace> passed = firstPlaces(*from, best->order, next);
  std::erase_if(passed, [&](const RankedPlace& place) { return !isBefore(place.value, best->value, best->order); });
  found.passedOver = withCoordinates(std::move(passed));
}

// Most extremes of a quantity are over the same numbers.
const std::vector<RowValues>& Locator::Model::valuesOf(const Record& record, int frame, const WantedValues& wanted) {
  const odb_FieldOutput& of = record.set == nullptr ? fieldOf(record, frame) : subsetOf(record, frame);
  // Where each number of a row counts, the largest and the smallest one of a row differ.
  const bool isByRow = record.set == nullptr && (wanted.quantity.empty() || wanted.quantity == "mises");
  const ValuesKey key = {record.set, wanted.quantity, wanted.isEngineering(), isByRow && wanted.isMax()};
  if (valuesKey_ == key) return values_;
  valuesKey_.reset();
  values_ = record.set == nullptr ? wholeModelValues(of, wanted) : setValues(of, wanted);
  valuesKey_ = key;
  return values_;
}

LocatedExtreme Locator::Model::locateField(const Record& record, int frame, std::size_t next) {
  const WantedValues wanted = {record.quantity, record.extreme};
  const bool isWholeModel = record.set == nullptr;
  const std::vector<RowValues>& blocks = valuesOf(record, frame, wanted);
  LocatedExtreme found;
  for (const RowValues& block : blocks) found.rows += static_cast<std::uint64_t>(block.rows);
  if (wanted.isEngineering()) {
    locateEngineering(blocks, wanted, isWholeModel, next, found);
  } else {
    locatePlain(blocks, wanted, next, found);
  }
  return found;
}

// A sample's value is its last number, the one before it the abscissa.
LocatedExtreme Locator::Model::locateHistory(const Record& record) {
  const odbstore::StoredStep& step = stepOf(record);
  const odbstore::HistorySamples samples = step.historySamples(std::string(record.region), std::string(record.output));
  const WantedValues wanted = {"", record.extreme};
  LocatedExtreme found;
  found.rows = static_cast<std::uint64_t>(samples.samples);
  for (std::int64_t i = 0; samples.width > 0 && i < samples.samples; ++i) {
    const float* const end = samples.numbers.data() + (i + 1) * samples.width;
    const auto value = static_cast<double>(end[-1]);
    if (!isTaken(value, wanted)) continue;
    if (found.sample < 0 || isBefore(value, found.value, orderOf(wanted))) {
      found.sample = i;
      found.value = value;
      found.abscissa = samples.width > 1 ? static_cast<double>(end[-2]) : static_cast<double>(i);
      found.equal = 0;
    }
    if (value == found.value) ++found.equal;
  }
  const odbstore::HistoryRegionInfo info = step.historyRegion(std::string(record.region)).info;
  if (found.sample >= 0 && (info.node >= 0 || info.element >= 0) && reader_->instances().size() == 1) {
    found.places = withCoordinates(
        {{found.value, reader_->instances().front().name, info.node, info.element, info.integrationPoint}});
  }
  return found;
}

Locator::Locator(std::shared_ptr<const odbstore::Reader> database, const ExtractionSwitches& switches)
    : model_(std::make_unique<Model>(std::move(database), switches)) {}

Locator::~Locator() = default;

LocatedExtreme Locator::locate(const Record& record, std::size_t next) {
  if (record.kind == RecordKind::field) return locateIn(record, record.frame, next);
  return model_->locateHistory(record);
}

LocatedExtreme Locator::locateIn(const Record& record, int frame, std::size_t next) {
  try {
    return model_->locateField(record, frame, next);
  } catch (const odb_Exception& error) {
    throw odbstore::StoreError(model_->fileName(), "", error.UserReport().cStr());
  }
}

std::vector<int> Locator::framesOf(const Record& record) const {
  const odbstore::StoredField* const field = model_->stepOf(record).findField(std::string(record.field));
  std::vector<int> frames = field == nullptr ? std::vector<int>() : field->frames();
  std::sort(frames.begin(), frames.end());
  return frames;
}

}  // namespace inspect
