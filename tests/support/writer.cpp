#include "support/writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <type_traits>

#include "odbstore/layout.h"
#include "odbstore/names.h"
#include "odbstore/store_error.h"
#include "odbwriter/block_series.h"
#include "odbwriter/row_index.h"
#include "support/spool.h"

namespace odbstore {

namespace {

// Rows of one block in one frame, waiting in the spool.
struct Slab {
  int frame;
  std::int64_t offset;
  std::int64_t numbers;
};

// Where rows lie, and how they are found among those of a slab. Rows that are found in another way are of another
// block.
struct PlacedLocation {
  int location = -1;
  std::optional<KeptPlaces> places;
};

struct FieldState {
  std::string name;
  DatabaseWriter::Field id;
  FieldInfo info;
  std::set<int> frames;
  std::map<int, FieldInfo> infoInFrame;  // where it is another
  BlockSeries series;
  std::vector<std::vector<Slab>> slabs;  // of each block
};

struct StepState {
  std::string name;
  DatabaseWriter::Step id;
  std::vector<FieldState> fields;
  std::map<std::string, int> fieldIndex;
  std::map<std::string, DatabaseWriter::Region> regions;
};

struct LocationState {
  LocationInfo info;
  LocationLabels labels;
  std::int64_t rows;
};

struct SpooledHistory {
  DatabaseWriter::History id;
  std::int64_t offset;
  std::int64_t numbers;
};

}  // namespace

class Writer::Impl {
 public:
  Impl(const std::string& path, WriterOptions options) : name_(path), writer_(path, options), spool_(path) {}

  DatabaseWriter& writer() { return writer_; }

  LocationId addLocation(const LocationInfo& info, const LocationLabels& labels) {
    for (std::size_t i = 0; i < locations_.size(); ++i) {
      if (locations_[i].info == info && locations_[i].labels == labels) return {static_cast<int>(i)};
    }
    std::optional<std::size_t> rows;
    for (const auto& [has, values] : {std::pair{hasNodeLabels(info.position), &labels.nodes},
                                      std::pair{hasElementLabels(info.position), &labels.elements},
                                      std::pair{hasIntegrationPoints(info.position), &labels.integrationPoints}}) {
      if (has ? rows && *rows != values->size() : !values->empty()) {
        fail(std::string("/") + links::kLocations,
             fmt::format("the labels do not fit the position {}", positionWord(info.position)));
      }
      if (has) rows = values->size();
    }
    locations_.push_back({info, labels, static_cast<std::int64_t>(*rows)});
    return {static_cast<int>(locations_.size()) - 1};
  }

  StepId addStep(const std::string& name, const StepInfo& info) {
    const DatabaseWriter::Step id = writer_.addStep(name, info);
    steps_.push_back({name, id, {}, {}, {}});
    return {static_cast<int>(steps_.size()) - 1};
  }

  FrameId addFrame(StepId id, const FrameInfo& info) { return {id, writer_.addFrame(step(id).id, info)}; }

  FieldId addField(FrameId frame, const std::string& name, const FieldInfo& info) {
    StepState& step = this->step(frame.step);
    const auto [known, isNew] = step.fieldIndex.emplace(name, static_cast<int>(step.fields.size()));
    if (isNew) step.fields.push_back({name, writer_.addField(step.id, name, info), info, {}, {}, {}, {}});
    FieldState& field = step.fields[static_cast<std::size_t>(known->second)];
    if (!field.frames.insert(frame.index).second) {
      fail(pathOf(step), fmt::format("field \"{}\": frame {} has it already", name, frame.index));
    }
    writer_.addFieldFrame(field.id, frame.index);
    if (!(info == field.info)) {
      writer_.describeField(field.id, frame.index, info);
      field.infoInFrame.emplace(frame.index, info);
    }
    return {frame, known->second};
  }

  template <class Number>
  void addBlock(FieldId id, LocationId location, std::span<const Number> rows, const BlockOverrides& overrides,
                int widthOfEmpty) {
    const StepState& step = this->step(id.frame.step);
    const LocationState& place = locations_.at(static_cast<std::size_t>(location.index));
    const FieldInfo& info = infoOf(id);
    const BlockKey key{placed({location.index, std::nullopt}), overrides.type.value_or(info.type),
                       overrides.componentLabels.empty() ? info.componentLabels : overrides.componentLabels,
                       std::is_same_v<Number, double>, widthOf(step, place, rows.size(), widthOfEmpty)};
    checkBlock(step, key);
    addSlab(id, key,
            {id.frame.index, spool_.append(rows.data(), rows.size_bytes()), static_cast<std::int64_t>(rows.size())});
  }

  KeptRows keepRows(std::span<const float> rows, int width) {
    const auto count = static_cast<std::int64_t>(rows.size());
    if (width < 1 || count % width != 0) fail("/", fmt::format("{} numbers are no rows of {}", count, width));
    return {spool_.append(rows.data(), rows.size_bytes()), count / width, width};
  }

  KeptPlaces keepPlaces(std::span<const int> places) {
    const auto [least, largest] = std::minmax_element(places.begin(), places.end());
    if (!places.empty() && *least < 0) fail("/", fmt::format("the place {} is none of a row", *least));
    return {spool_.append(places.data(), places.size_bytes()), static_cast<std::int64_t>(places.size()),
            places.empty() ? -1 : *largest};
  }

  void addBlock(FieldId id, LocationId location, const KeptRows& rows, const KeptPlaces& places) {
    const StepState& step = this->step(id.frame.step);
    const LocationState& place = locations_.at(static_cast<std::size_t>(location.index));
    if (places.count != place.rows) {
      fail(pathOf(step), fmt::format("{} places do not fill {} rows", places.count, place.rows));
    }
    if (places.largest >= rows.rows) {
      fail(pathOf(step), fmt::format("the row {} is not among {} rows", places.largest, rows.rows));
    }
    const FieldInfo& info = infoOf(id);
    const BlockKey key{placed({location.index, places}), info.type, info.componentLabels, false, rows.width};
    checkBlock(step, key);
    addSlab(id, key, {id.frame.index, rows.offset, rows.rows * rows.width});
  }

  HistoryRegionId addHistoryRegion(StepId id, const std::string& name, const HistoryRegionInfo& info) {
    StepState& step = this->step(id);
    step.regions.emplace(name, writer_.addHistoryRegion(step.id, name, info));
    return {id, name};
  }

  void addHistoryOutput(const HistoryRegionId& id, const std::string& name, const HistorySamples& samples) {
    const DatabaseWriter::Region region = step(id.step).regions.at(id.name);
    if (static_cast<std::int64_t>(samples.numbers.size()) != samples.samples * samples.width) {
      fail(pathOf(step(id.step)),
           fmt::format("\"{}\" does not hold {} samples of {} numbers", name, samples.samples, samples.width));
    }
    const std::span<const float> numbers(samples.numbers);
    histories_.push_back({writer_.addHistory(region, name, samples.samples, samples.width),
                          spool_.append(numbers.data(), numbers.size_bytes()),
                          static_cast<std::int64_t>(numbers.size())});
  }

  void finish() {
    std::vector<WrittenBlock> blocks;
    for (StepState& step : steps_) {
      for (FieldState& field : step.fields) {
        for (std::size_t k = 0; k < field.series.count(); ++k) blocks.push_back(declare(field, k));
      }
    }
    locations_ = {};
    writer_.layOut();
    for (const WrittenBlock& block : blocks) deliver(block);
    for (const SpooledHistory& history : histories_) {
      writer_.writeSamples(history.id, fromSpool<float>(history.offset, history.numbers));
    }
    writer_.finish();
  }

 private:
  struct WrittenBlock {
    const std::vector<Slab>* slabs;
    bool isDouble;
    std::size_t width;
    DatabaseWriter::Block id;
    const std::vector<int>* source;  // of each delivered row the kept row; null where all are delivered as they are
  };

  [[noreturn]] void fail(const std::string& object, const std::string& reason) const {
    throw StoreError(name_, object, reason);
  }

  static std::string pathOf(const StepState& step) {
    return std::string("/") + links::kSteps + "/" + linkFromName(step.name);
  }

  StepState& step(StepId id) { return steps_.at(static_cast<std::size_t>(id.index)); }

  const FieldInfo& infoOf(FieldId id) {
    const FieldState& field = step(id.frame.step).fields.at(static_cast<std::size_t>(id.index));
    const auto changed = field.infoInFrame.find(id.frame.index);
    return changed == field.infoInFrame.end() ? field.info : changed->second;
  }

  std::int64_t widthOf(const StepState& step, const LocationState& location, std::size_t numbers,
                       int widthOfEmpty) const {
    if (location.rows == 0 && numbers == 0) return widthOfEmpty;
    const auto count = static_cast<std::int64_t>(numbers);
    if (location.rows == 0 || count == 0 || count % location.rows != 0) {
      fail(pathOf(step), fmt::format("{} numbers do not fill {} rows", count, location.rows));
    }
    if (count > std::numeric_limits<int>::max()) fail(pathOf(step), "a frame of a block is too large");
    return count / location.rows;
  }

  void checkBlock(const StepState& step, const BlockKey& block) const {
    const auto count = static_cast<std::int64_t>(block.componentLabels.size());
    if (count != 0 && count != block.width) {
      fail(pathOf(step), fmt::format("rows of {} numbers do not fit {} component labels", block.width, count));
    }
    if (count == 0 && isTensorType(block.type) &&
        block.width > static_cast<std::int64_t>(defaultTensorLabels(block.type).size())) {
      fail(pathOf(step), fmt::format("rows of {} numbers do not fit type {}", block.width, block.type));
    }
  }

  int placed(const PlacedLocation& wanted) {
    const auto key = std::pair(wanted.location, wanted.places ? wanted.places->offset : -1);
    const auto [known, isNew] = placedIndex_.emplace(key, static_cast<int>(placed_.size()));
    if (isNew) placed_.push_back(wanted);
    return known->second;
  }

  void addSlab(FieldId id, const BlockKey& key, const Slab& slab) {
    FieldState& field = step(id.frame.step).fields.at(static_cast<std::size_t>(id.index));
    const std::size_t block = field.series.next(id.frame.index, key);
    field.slabs.resize(field.series.count());
    field.slabs[block].push_back(slab);
  }

  struct UsedLocation {
    DatabaseWriter::Location id;
    std::vector<int> source;
  };

  const UsedLocation& useLocation(int index) {
    const auto known = used_.find(index);
    if (known != used_.end()) return known->second;
    const PlacedLocation& placed = placed_[static_cast<std::size_t>(index)];
    const LocationState& location = locations_[static_cast<std::size_t>(placed.location)];
    UsedLocation used;
    if (placed.places && placed.places->count > 0) {
      const std::vector<int> sources = fromSpool<int>(placed.places->offset, placed.places->count);
      RowIndex rows = makeRowIndex(sources, placed.places->largest + 1);
      used.id = writer_.addLocation(location.info, location.labels, std::move(rows.rowOf));
      used.source = std::move(rows.source);
    } else {
      used.id = writer_.addLocation(location.info, location.labels);
    }
    return used_.emplace(index, std::move(used)).first->second;
  }

  WrittenBlock declare(FieldState& field, std::size_t block) {
    const BlockKey& key = field.series.key(block);
    std::vector<Slab>& slabs = field.slabs[block];
    std::sort(slabs.begin(), slabs.end(), [](const Slab& a, const Slab& b) { return a.frame < b.frame; });
    std::vector<int> frames;
    for (const Slab& slab : slabs) frames.push_back(slab.frame);
    const UsedLocation& location = useLocation(key.location);
    const bool isKept = placed_[static_cast<std::size_t>(key.location)].places.has_value();
    return {
        &slabs, key.isDouble, static_cast<std::size_t>(key.width),
        writer_.addBlock(field.id, location.id, formOf(key, field.info, !field.infoInFrame.empty(), std::move(frames))),
        isKept ? &location.source : nullptr};
  }

  template <class Number>
  std::vector<Number> fromSpool(std::int64_t offset, std::int64_t numbers) const {
    std::vector<Number> read(static_cast<std::size_t>(numbers));
    if (!read.empty()) spool_.read(offset, read.data(), read.size() * sizeof(Number));
    return read;
  }

  void deliver(const WrittenBlock& block) {
    for (const Slab& slab : *block.slabs) {
      if (block.isDouble) {
        writer_.writeRows(block.id, slab.frame, std::span<const double>(fromSpool<double>(slab.offset, slab.numbers)));
      } else if (block.source == nullptr) {
        writer_.writeRows(block.id, slab.frame, std::span<const float>(fromSpool<float>(slab.offset, slab.numbers)));
      } else {
        deliverKept(block, slab);
      }
      // Room that is free again need not be on the disk twice. Kept rows may be wanted by the next block.
      const std::size_t size = block.isDouble ? sizeof(double) : sizeof(float);
      if (block.source == nullptr) spool_.release(slab.offset, static_cast<std::size_t>(slab.numbers) * size);
    }
  }

  void deliverKept(const WrittenBlock& block, const Slab& slab) {
    const std::vector<float> kept = fromSpool<float>(slab.offset, slab.numbers);
    std::vector<float> rows(block.source->size() * block.width);
    float* to = rows.data();
    for (const int source : *block.source) {
      to = std::copy_n(kept.data() + static_cast<std::size_t>(source) * block.width, block.width, to);
    }
    writer_.writeRows(block.id, slab.frame, std::span<const float>(rows));
  }

  std::string name_;
  DatabaseWriter writer_;
  Spool spool_;
  std::vector<LocationState> locations_;
  std::vector<StepState> steps_;
  std::vector<SpooledHistory> histories_;
  std::vector<PlacedLocation> placed_;
  std::map<std::pair<int, std::int64_t>, int> placedIndex_;
  std::map<int, UsedLocation> used_;  // by place in placed_
};

Writer::Writer(const std::string& path, WriterOptions options) : impl_(std::make_unique<Impl>(path, options)) {}

Writer::~Writer() = default;

void Writer::setName(const std::string& name) { impl_->writer().setName(name); }

void Writer::setTitle(const std::string& title) { impl_->writer().setTitle(title); }

void Writer::setProducer(const std::string& producer) { impl_->writer().setProducer(producer); }

void Writer::setAssemblyName(const std::string& name) { impl_->writer().setAssemblyName(name); }

void Writer::setSymmetryAxis(const std::array<float, 6>& axis) { impl_->writer().setSymmetryAxis(axis); }

void Writer::addPart(const std::string& name) { impl_->writer().addPart(name); }

void Writer::addInstance(const std::string& name, const std::string& part) { impl_->writer().addInstance(name, part); }

void Writer::addNodes(const std::string& instance, std::span<const int> labels, std::span<const double> coordinates) {
  impl_->writer().addNodes(instance, {labels.begin(), labels.end()}, {coordinates.begin(), coordinates.end()});
}

void Writer::addElements(const std::string& instance, const std::string& type, std::span<const int> labels,
                         std::span<const int> connectivity) {
  impl_->writer().addElements(instance, type, {labels.begin(), labels.end()},
                              {connectivity.begin(), connectivity.end()});
}

void Writer::addSet(const Owner& owner, SetKind kind, const std::string& name, std::span<const SetMembers> members) {
  impl_->writer().addSet(owner, kind, name, {members.begin(), members.end()});
}

LocationId Writer::addLocation(const LocationInfo& info, const LocationLabels& labels) {
  return impl_->addLocation(info, labels);
}

StepId Writer::addStep(const std::string& name, const StepInfo& info) { return impl_->addStep(name, info); }

FrameId Writer::addFrame(StepId step, const FrameInfo& info) { return impl_->addFrame(step, info); }

FieldId Writer::addField(FrameId frame, const std::string& name, const FieldInfo& info) {
  return impl_->addField(frame, name, info);
}

void Writer::addBlock(FieldId field, LocationId location, std::span<const float> rows, const BlockOverrides& overrides,
                      int widthOfEmpty) {
  impl_->addBlock(field, location, rows, overrides, widthOfEmpty);
}

void Writer::addBlock(FieldId field, LocationId location, std::span<const double> rows, const BlockOverrides& overrides,
                      int widthOfEmpty) {
  impl_->addBlock(field, location, rows, overrides, widthOfEmpty);
}

KeptRows Writer::keepRows(std::span<const float> rows, int width) { return impl_->keepRows(rows, width); }

KeptPlaces Writer::keepPlaces(std::span<const int> places) { return impl_->keepPlaces(places); }

void Writer::addBlock(FieldId field, LocationId location, const KeptRows& rows, const KeptPlaces& places) {
  impl_->addBlock(field, location, rows, places);
}

HistoryRegionId Writer::addHistoryRegion(StepId step, const std::string& name, const HistoryRegionInfo& info) {
  return impl_->addHistoryRegion(step, name, info);
}

void Writer::addHistoryOutput(const HistoryRegionId& region, const std::string& name, const HistorySamples& samples) {
  impl_->addHistoryOutput(region, name, samples);
}

void Writer::finish() { impl_->finish(); }

}  // namespace odbstore
