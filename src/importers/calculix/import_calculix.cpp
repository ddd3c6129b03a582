#include "importers/calculix/import_calculix.h"

#include <fmt/format.h>

#include <set>

#include "importers/calculix/deck.h"
#include "importers/calculix/field_mapping.h"
#include "importers/calculix/frames.h"
#include "importers/calculix/frd_reader.h"
#include "importers/calculix/model.h"

namespace importers::calculix {

namespace {

// The chosen columns of row after row of a block; `row(i)` is the i-th row to take.
template <class Row>
void gather(const FrdResult& block, const std::vector<int>& columns, std::size_t count, Row&& row,
            std::vector<float>& out) {
  const std::size_t width = block.components.size();
  out.resize(count * columns.size());
  float* to = out.data();
  for (std::size_t i = 0; i < count; ++i) {
    const float* const from = block.values.data() + row(i) * width;
    for (const int column : columns) *to++ = from[column];
  }
}

class Import {
 public:
  Import(const ImportRequest& request, const WarningSink& warn)
      : request_(request),
        warn_(warn),
        reader_(request.results),
        deck_(request.deck.empty() ? Deck{} : readDeck(request.deck, warn)),
        writer_(request.output, request.storage),
        model_(deck_, request.results, writer_),
        frames_(request.status, deck_.stepTitles, &writer_, warn) {}

  ImportSummary run() {
    writer_.setTitle(deck_.heading.empty() ? reader_.header().title : deck_.heading);
    writer_.setProducer(reader_.header().program);
    writer_.setAssemblyName("ASSEMBLY");
    writer_.addPart(kPart);
    writer_.addInstance(kInstance, kPart);
    while (const std::optional<FrdBlock> block = reader_.next()) {
      std::visit([this](const auto& content) { take(content); }, *block);
    }
    checkEnd();
    if (!request_.deck.empty()) model_.addSets(warn_);
    writer_.finish();
    return {frames_.stepCount(), frames_.frameCount(), static_cast<int>(fields_.size()), model_.setCount(),
            reader_.isCutOff() ? endOfResults() : ""};
  }

 private:
  void take(const FrdNodes& nodes) {
    if (model_.hasNodes()) fail(nodes.line, "a second model in one file cannot be imported");
    model_.addNodes(nodes);
  }

  void take(const FrdElements& elements) {
    if (model_.hasElements()) fail(elements.line, "a second model in one file cannot be imported");
    model_.addElements(elements);
  }

  void take(const FrdResult& block) {
    if (!model_.hasNodes()) fail(block.line, "results come before the nodes that they belong to");
    if (block.labels.empty()) {
      warnOnce(block, "has no rows and is left out");
      return;
    }
    const std::vector<MappedField> fields = mapResult(block, stressContent(block));
    std::vector<std::string> names;
    names.reserve(fields.size());
    for (const MappedField& field : fields) names.push_back(field.name);
    const odbstore::FrameId frame = frames_.write(block, names);
    RowPlaces& places = model_.placesOf(block);
    for (const MappedField& field : fields) addField(block, field, frame, places);
  }

  StressContent stressContent(const FrdResult& block) const {
    const bool hasForces = deck_.sectionForcesFrom > 0 && block.step >= deck_.sectionForcesFrom;
    return hasForces ? StressContent::sectionForces : StressContent::stress;
  }

  void addField(const FrdResult& block, const MappedField& field, odbstore::FrameId frame, RowPlaces& places) {
    fields_.insert(field.name);
    const odbstore::FieldId id = writer_.addField(frame, field.name, field.info);
    if (!field.isTensor()) {
      gather(
          block, field.columns, block.labels.size(), [](std::size_t i) { return i; }, rows_);
      writer_.addBlock(id, places.nodal(), std::span<const float>(rows_));
      return;
    }
    for (const ElementNodalRows& group : places.elementNodal()) {
      const auto row = [&](std::size_t i) { return static_cast<std::size_t>(group.gather[i]); };
      gather(block, field.columns, group.gather.size(), row, rows_);
      writer_.addBlock(id, group.location, std::span<const float>(rows_));
    }
    if (places.looseRows() > 0) {
      warnOnce(block, fmt::format("has tensors at {} nodes that belong to no element, and they are left out",
                                  places.looseRows()));
    }
  }

  std::string endOfResults() const { return frames_.frameCount() > 0 ? frames_.lastPlace() : "the model"; }

  void checkEnd() {
    const bool hasResults = frames_.frameCount() > 0;
    if (reader_.isCutOff() && !model_.hasElements() && !hasResults) {
      fail(reader_.lineNumber(), "the file ends before its model is complete");
    }
    if (!model_.hasNodes()) fail(reader_.lineNumber(), "there is no model");
    if (reader_.isCutOff()) {
      const std::string text = "the file is cut off here; what is complete in it ends behind " + endOfResults();
      if (request_.isStrict) fail(reader_.lineNumber(), text);
      warnAt(reader_.lineNumber(), text);
    } else if (!hasResults) {
      warnAt(0, "the file holds no results");
    }
  }

  [[noreturn]] void fail(std::int64_t line, const std::string& reason) const {
    throw ImportError(request_.results, line, reason);
  }

  void warnAt(std::int64_t line, const std::string& text) const {
    warn_(fmt::format("{}: warning: {}", placeIn(request_.results, line), text));
  }

  // What is true of a field in one frame often is in all of them.
  void warnOnce(const FrdResult& block, const std::string& text) {
    if (warnedOf_.insert(block.name).second) warnAt(block.line, block.name + " " + text);
  }

  const ImportRequest& request_;
  const WarningSink& warn_;
  FrdReader reader_;
  Deck deck_;
  odbstore::Writer writer_;
  Model model_;
  Frames frames_;
  std::vector<float> rows_;  // of the block being written
  std::set<std::string> fields_;
  std::set<std::string> warnedOf_;  // names of blocks
};

}  // namespace

ImportSummary importCalculix(const ImportRequest& request, const WarningSink& warn) {
  return Import(request, warn).run();
}

}  // namespace importers::calculix
