#include "importers/run/sink.h"

#include <fmt/core.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <type_traits>

#include "importers/run/record_names.h"
#include "odbwriter/row_index.h"

namespace importers {

namespace {

// Results come for all nodes or for a few sets again and again; more different ones are seldom in use at once.
constexpr std::size_t kKeptNodeRows = 8;

constexpr int kScalar = 2;

template <typename To, typename From>
std::span<const To> converted(std::span<const From> from, base::UnfilledVector<To>& room) {
  if constexpr (std::is_same_v<To, From>) {
    return from;
  } else {
    room.resize(from.size());
    std::transform(from.begin(), from.end(), room.begin(), [](From number) { return static_cast<To>(number); });
    return room;
  }
}

// Numbers whose exponent has all bits, several at a time, which the compiler does not make of std::isfinite().
template <typename Number>
std::size_t countNotFinite(std::span<const Number> values) {
  using Bits = std::conditional_t<sizeof(Number) == sizeof(std::uint32_t), std::uint32_t, std::uint64_t>;
  constexpr Bits exponent = std::bit_cast<Bits>(std::numeric_limits<Number>::infinity());
  std::size_t count = 0;
  while (!values.empty()) {
    // The sum of a piece fits into the number of bits of an element.
    const auto piece = values.first(std::min<std::size_t>(values.size(), 4096));
    Bits inPiece = 0;
    for (const Number value : piece) inPiece += (std::bit_cast<Bits>(value) & exponent) == exponent ? 1 : 0;
    count += inPiece;
    values = values.subspan(piece.size());
  }
  return count;
}

// Rows in another order, or some of them. Of a width that the compiler knows it makes a few instructions a row.
template <std::size_t kWidth>
void gatherRows(std::span<const int> source, const float* from, float* to) {
  for (const int row : source) {
    const float* const values = from + static_cast<std::size_t>(row) * kWidth;
    for (std::size_t i = 0; i < kWidth; ++i) to[i] = values[i];
    to += kWidth;
  }
}

void gatherRows(std::span<const int> source, std::size_t width, const float* from, float* to) {
  if (width == 6) return gatherRows<6>(source, from, to);
  if (width == 1) return gatherRows<1>(source, from, to);
  for (const int row : source) to = std::copy_n(from + static_cast<std::size_t>(row) * width, width, to);
}

// What the extraction puts after the name of an output of a region: the last that its place has.
std::string recordLabel(const odbstore::HistoryRegionInfo& info) {
  if (!info.set.empty()) return info.set;
  if (info.sectionPoint > 0) return std::to_string(info.sectionPoint);
  if (info.integrationPoint != 0) return std::to_string(info.integrationPoint);
  if (info.element >= 0) return std::to_string(info.element);
  return info.node >= 0 ? std::to_string(info.node) : std::string();
}

}  // namespace

Sink::Sink(const Outline& outline, const Choice& choice, const std::set<FieldId>& irregular, const std::string& file,
           odbstore::DatabaseWriter& writer, const WarningSink& warn)
    : outline_(outline),
      choice_(choice),
      file_(file),
      irregular_(irregular),
      writer_(writer),
      warn_(warn),
      steps_(outline.steps.size()) {
  writer_.setTitle(outline.title);
  writer_.setProducer(outline.producer);
  writer_.setAssemblyName("ASSEMBLY");
  writer_.addPart(kPart);
  writer_.addInstance(kInstance, kPart);
  addSteps();
}

void Sink::addSteps() {
  for (std::size_t number = 0; number < outline_.steps.size(); ++number) {
    if (!choice_.takesStep(number)) continue;
    const OutlineStep& from = outline_.steps[number];
    Step& step = steps_[number].emplace();
    step.id = writer_.addStep(from.name, from.info);
    std::vector<bool> isTaken(from.frames.size());
    for (std::size_t field = 0; field < from.fields.size(); ++field) {
      for (const OutlineRows& rows : from.fields[field].frames) {
        if (takes({number, field, rows.frame})) isTaken[rows.frame] = true;
      }
    }
    step.frames.resize(from.frames.size());
    for (std::size_t frame = 0; frame < from.frames.size(); ++frame) {
      if (isTaken[frame]) step.frames[frame] = writer_.addFrame(step.id, from.frames[frame]);
    }
  }
}

void Sink::nodes(std::span<const int> labels, std::span<const double> coordinates, const SourcePlace& place) {
  if (hasNodes_) throw ImportError(place, "a second model in one file cannot be imported");
  hasNodes_ = true;
  nodes_ = base::LabelIndex(labels);
  if (const auto twice = nodes_.repeated()) {
    throw ImportError(place, fmt::format("the node {} occurs twice", *twice));
  }
  writer_.addNodes(kInstance, {labels.begin(), labels.end()}, {coordinates.begin(), coordinates.end()});
}

void Sink::elements(const ElementGroup& group, const SourcePlace& place) {
  for (std::size_t i = 0; i < group.connectivity.size(); ++i) {
    if (nodes_.contains(group.connectivity[i])) continue;
    const int element = group.labels[i / static_cast<std::size_t>(group.nodesPerElement)];
    throw ImportError(
        place, fmt::format("the element {} has the node {}, which does not exist", element, group.connectivity[i]));
  }
  elementsPlace_ = place;
  ElementGroup& to = groups_.groupOf(group.type, group.nodesPerElement, group.hasTensors, place);
  to.labels.insert(to.labels.end(), group.labels.begin(), group.labels.end());
  to.connectivity.insert(to.connectivity.end(), group.connectivity.begin(), group.connectivity.end());
}

void Sink::writeModel() {
  if (std::exchange(isModelWritten_, true)) return;
  groups_.index();
  if (const auto twice = groups_.repeated()) {
    throw ImportError(elementsPlace_, fmt::format("the element {} occurs twice", *twice));
  }
  for (const auto& group : groups_.all()) {
    writer_.addElements(kInstance, group->type, group->labels, group->connectivity);
  }
  writer_.layOut();
}

void Sink::set(std::size_t set, std::span<const int> labels) {
  if (!choice_.takesSet(set)) return;
  std::vector<odbstore::SetMembers> members;
  if (!labels.empty()) members.push_back({kInstance, {labels.begin(), labels.end()}});
  writer_.addSet({}, outline_.sets[set].kind, outline_.sets[set].name, std::move(members));
}

std::size_t Sink::piecesOf(const RowsId& id) const {
  const std::vector<OutlineRows>& frames = fieldOf(id).frames;
  const auto found = std::lower_bound(frames.begin(), frames.end(), id.frame,
                                      [](const OutlineRows& rows, std::size_t frame) { return rows.frame < frame; });
  return found->pieces;
}

template <typename Number>
void Sink::takeRows(const RowsId& id, odbstore::Position position, const RowLabels& labels,
                    std::span<const Number> values, const SourcePlace& place) {
  writeModel();
  const std::size_t pieces = piecesOf(id);
  if (pieces == 1) {
    writeRows(id, position, labels, values, place);
    return;
  }
  Pieces& known = pieces_[id];
  known.rows.add(position, labels, converted<double>(values, doubles_));
  if (++known.count < pieces) return;
  writeRows(id, position, known.rows.labels(), std::span<const double>(known.rows.values()), place);
  pieces_.erase(id);
}

void Sink::rows(const RowsId& id, odbstore::Position position, const RowLabels& labels, std::span<const float> values,
                const SourcePlace& place) {
  takeRows(id, position, labels, values, place);
}

void Sink::rows(const RowsId& id, odbstore::Position position, const RowLabels& labels, std::span<const double> values,
                const SourcePlace& place) {
  takeRows(id, position, labels, values, place);
}

template <typename Number>
void Sink::count(const RowsId& id, std::span<const Number> values) {
  const std::size_t strange = countNotFinite(values);
  if (strange == 0) return;
  Strange& known = strange_[fieldOf(id).name];
  if (known.values == 0) known = {0, id.step, id.frame};
  known.values += strange;
}

template <typename Number>
void Sink::writeRows(const RowsId& id, odbstore::Position position, const RowLabels& labels,
                     std::span<const Number> values, const SourcePlace& place) {
  if (values.empty()) return;
  const OutlineField& field = fieldOf(id);
  count(id, values);
  const bool isNodal = position == odbstore::Position::nodal;
  if (isNodal && (field.isSpread || odbstore::isTensorType(field.info.type))) {
    spread(id, nodeRows(id, labels.nodes, place), converted<float>(values, floats_), place);
    return;
  }
  if (isNodal) {
    NodeRows& at = nodeRows(id, labels.nodes, place);
    if (!at.nodal) at.nodal = writer_.addLocation({kInstance, position, "", 0, ""}, labels.copied());
    const std::size_t width = values.size() / at.labels.size();
    if (field.info.type == kScalar) {
      put(id, *at.nodal, converted<double>(values, doubles_), width);
    } else {
      put(id, *at.nodal, converted<float>(values, floats_), width);
    }
    return;
  }
  const auto at =
      writer_.addLocation({kInstance, position, groups_.commonType(labels.elements), 0, ""}, labels.copied());
  put(id, at, converted<float>(values, floats_), values.size() / labels.elements.size());
}

void Sink::spread(const RowsId& id, NodeRows& at, std::span<const float> values, const SourcePlace& place) {
  if (!at.spread) {
    SpreadRows spread = spreadOverElements(groups_.all(), at.labels);
    odbstore::RowIndex index =
        odbstore::makeRowIndex(std::move(spread.rowOf), static_cast<std::int64_t>(at.labels.size()));
    at.looseRows = spread.looseRows;
    at.source = std::move(index.source);
    at.spread = writer_.addLocation({kInstance, odbstore::Position::elementNodal, spread.type, 0, ""},
                                    {std::move(spread.nodes), std::move(spread.elements), {}}, std::move(index.rowOf));
  }
  const std::string& name = fieldOf(id).name;
  if (at.looseRows > 0 && looseOf_.insert(name).second) {
    warn_(base::warning(
        place, fmt::format("{} has values at {} nodes that belong to no element with such values; they are left out",
                           name, at.looseRows)));
  }
  const std::size_t width = values.size() / at.labels.size();
  stored_.resize(at.source.size() * width);
  gatherRows(at.source, width, values.data(), stored_.data());
  put(id, *at.spread, std::span<const float>(stored_), width);
}

template <typename Number>
void Sink::put(const RowsId& id, odbstore::DatabaseWriter::Location location, std::span<const Number> rows,
               std::size_t width) {
  constexpr bool isDouble = std::is_same_v<Number, double>;
  Block& block = blockFor(id, location, isDouble, width);
  --block.left;
  if (block.location != location.index || block.width != width) {
    newlyIrregular_.emplace(id.step, id.field);
    return;
  }
  writer_.writeRows(block.id, *steps_[id.step]->frames[id.frame], rows);
}

// Frames without a block whose rows will be like those of this one, according to the outline.
std::vector<std::size_t> Sink::framesLike(const RowsId& id, const Field& field) const {
  if (irregular_.contains({id.step, id.field})) return {id.frame};
  const std::vector<OutlineRows>& all = fieldOf(id).frames;
  const OutlineRows& own =
      *std::find_if(all.begin(), all.end(), [&](const auto& rows) { return rows.frame == id.frame; });
  std::vector<std::size_t> frames;
  for (const OutlineRows& rows : all) {
    const bool isLike = rows.rows == own.rows && rows.pieces == own.pieces;
    if (isLike && takes({id.step, id.field, rows.frame}) && !field.blockOfFrame.contains(rows.frame)) {
      frames.push_back(rows.frame);
    }
  }
  return frames;
}

Sink::Block& Sink::blockFor(const RowsId& id, odbstore::DatabaseWriter::Location location, bool isDouble,
                            std::size_t width) {
  auto known = fields_.find({id.step, id.field});
  if (known == fields_.end()) {
    const OutlineField& field = fieldOf(id);
    const auto added = writer_.addField(steps_[id.step]->id, field.name, field.info);
    known = fields_.emplace(FieldId{id.step, id.field}, Field{added, {}, {}}).first;
  }
  Field& field = known->second;
  const auto planned = field.blockOfFrame.find(id.frame);
  if (planned != field.blockOfFrame.end()) return field.blocks[planned->second];
  const std::vector<std::size_t> frames = framesLike(id, field);
  odbstore::DatabaseWriter::BlockForm form;
  form.width = static_cast<int>(width);
  form.isDouble = isDouble;
  form.frames.emplace();
  for (const std::size_t frame : frames) {
    form.frames->push_back(*steps_[id.step]->frames[frame]);
    field.blockOfFrame.emplace(frame, field.blocks.size());
  }
  field.blocks.push_back({writer_.addBlock(field.id, location, std::move(form)), location.index, width, frames.size()});
  return field.blocks.back();
}

Sink::NodeRows& Sink::nodeRows(const RowsId& id, std::span<const int> labels, const SourcePlace& place) {
  auto found = std::find_if(nodeRows_.begin(), nodeRows_.end(), [&](const auto& known) {
    return std::equal(known->labels.begin(), known->labels.end(), labels.begin(), labels.end());
  });
  if (found == nodeRows_.end()) {
    if (const auto twice = base::LabelIndex(labels).repeated()) {
      throw ImportError(place, fmt::format("{} has two rows for the node {}", fieldOf(id).source, *twice));
    }
    if (nodeRows_.size() == kKeptNodeRows) nodeRows_.pop_back();
    nodeRows_.push_back(std::make_unique<NodeRows>(NodeRows{{labels.begin(), labels.end()}, {}, {}, {}, 0}));
    found = nodeRows_.end() - 1;
  }
  std::rotate(nodeRows_.begin(), found, found + 1);
  return *nodeRows_.front();
}

// Outputs of two regions may have one name in the records: a node and a set called by its number, say.
std::string Sink::uniqueOutput(Step& step, const std::string& label, const std::string& output) {
  std::string name = output;
  for (int number = 2; !step.records.insert(historyRecord(name, label)).second; ++number) {
    name = fmt::format("{}-{}", output, number);
  }
  if (name != output) {
    warn_(base::note({file_}, fmt::format("the history {} of {} is called {}, because another one has the name", output,
                                          label, name)));
  }
  return name;
}

void Sink::history(std::size_t step, const std::string& region, const odbstore::HistoryRegionInfo& info,
                   const std::string& output, const odbstore::HistorySamples& samples) {
  Step& to = *steps_[step];
  const auto [known, isNew] = to.regions.emplace(region, Region{info, recordLabel(info)});
  to.histories.push_back({region, uniqueOutput(to, known->second.label, output), samples});
  ++histories_;
}

void Sink::writeHistories() {
  std::vector<std::pair<odbstore::DatabaseWriter::History, const odbstore::HistorySamples*>> added;
  for (const std::optional<Step>& step : steps_) {
    if (!step) continue;
    std::map<std::string, odbstore::DatabaseWriter::Region> regions;
    for (const auto& [name, region] : step->regions) {
      regions.emplace(name, writer_.addHistoryRegion(step->id, name, region.info));
    }
    for (const History& history : step->histories) {
      added.emplace_back(writer_.addHistory(regions.at(history.region), history.output, history.samples.samples,
                                            history.samples.width),
                         &history.samples);
    }
  }
  writer_.layOut();
  for (const auto& [id, samples] : added) writer_.writeSamples(id, samples->numbers);
}

void Sink::finish() {
  writeModel();
  for (const auto& [id, field] : fields_) {
    const bool isWhole =
        std::all_of(field.blocks.begin(), field.blocks.end(), [](const Block& b) { return b.left == 0; });
    if (!isWhole) newlyIrregular_.insert(id);
  }
  if (newlyIrregular_.empty()) writeHistories();
  for (const auto& [name, strange] : strange_) {
    const OutlineStep& step = outline_.steps[strange.step];
    warn_(base::warning(
        {file_}, fmt::format("{} values of {} are not finite numbers, from {}, frame {} on", strange.values, name,
                             step.name, step.frames[strange.frame].incrementNumber)));
  }
}

}  // namespace importers
