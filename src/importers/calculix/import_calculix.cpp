#include "importers/calculix/import_calculix.h"

#include <fmt/format.h>

#include <optional>
#include <set>

#include "importers/calculix/contents.h"
#include "importers/calculix/contents_table.h"
#include "importers/calculix/deck.h"
#include "importers/calculix/field_mapping.h"
#include "importers/calculix/frames.h"
#include "importers/calculix/frd_reader.h"
#include "importers/calculix/mass_properties.h"
#include "importers/calculix/model.h"

namespace importers::calculix {

namespace {

// The chosen columns of all rows of a block.
void takeColumns(const FrdResult& block, const std::vector<int>& columns, std::vector<float>& out) {
  const std::size_t width = block.components.size();
  out.resize(block.labels.size() * columns.size());
  float* to = out.data();
  for (const float* from = block.values.data(); to != out.data() + out.size(); from += width) {
    for (const int column : columns) *to++ = from[column];
  }
}

Deck deckOf(const ImportRequest& request, const WarningSink& warn, DeckDetail detail) {
  return request.deck.empty() ? Deck{} : readDeck(request.deck, warn, detail);
}

// Which result blocks are selected, by their place among all of them; nothing for all.
std::optional<std::set<std::size_t>> selectedBlocks(const ImportRequest& request, const Deck& deck) {
  if (request.selection.isEverything()) return std::nullopt;
  // Whatever there is to warn of comes up again when the rows are read.
  Contents contents = readContents(request.results, request.status, deck, [](const std::string&) {});
  select(contents, request.selection, request.results);
  std::set<std::size_t> ordinals;
  for (const ContentsBlock& block : contents.blocks) ordinals.insert(block.ordinal);
  return ordinals;
}

class Import {
 public:
  Import(const ImportRequest& request, const WarningSink& warn, const ProgressSink& progress)
      : request_(request),
        warn_(warn),
        progress_(progress),
        reader_(request.results),
        deck_(deckOf(request, warn, request.withMass ? DeckDetail::mass : DeckDetail::sets)),
        selected_(selectedBlocks(request, deck_)),
        writer_(request.output, request.storage),
        model_(deck_, request.results, writer_),
        frames_(request.status, deck_.stepTitles, &writer_, warn) {
    if (request.withMass) {
      if (const std::optional<StepMass> mass = massOf(deck_, warn)) frames_.setMass(*mass);
    }
    deck_.mesh.dropNodes();
  }

  ImportSummary run() {
    writer_.setTitle(deck_.heading.empty() ? reader_.header().title : deck_.heading);
    writer_.setProducer(reader_.header().program);
    writer_.setAssemblyName("ASSEMBLY");
    writer_.addPart(kPart);
    writer_.addInstance(kInstance, kPart);
    const ResultFilter isWanted = [this](const FrdResult&) { return startResult(); };
    while (const std::optional<FrdBlock> block = reader_.next(isWanted)) {
      std::visit([this](const auto& content) { take(content); }, *block);
      if (progress_) progress_(reader_.offset(), reader_.size());
    }
    checkEnd();
    if (!request_.deck.empty()) model_.addSets(warn_);
    if (progress_) progress_(reader_.size(), reader_.size());
    rows_ = {};  // completing the database takes as much again
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

  // Counts the result block that comes next, and tells whether it is selected.
  bool startResult() {
    const std::size_t ordinal = resultCount_++;
    isSelected_ = !selected_ || selected_->contains(ordinal);
    return isSelected_;
  }

  void take(const FrdResult& block) {
    if (!model_.hasNodes()) fail(block.line, "results come before the nodes that they belong to");
    const std::vector<MappedField> fields = mapResult(block, stressContentOf(block, deck_));
    if (!isSelected_) {
      if (block.rows > 0) frames_.find(block, namesOfFields(fields));
      return;
    }
    if (block.labels.empty()) {
      warnOnce(block, "has no rows and is left out");
      return;
    }
    const odbstore::FrameId frame = frames_.write(block, namesOfFields(fields));
    RowPlaces& places = model_.placesOf(block);
    for (const MappedField& field : fields) {
      if (request_.selection.takesField(field.name)) addField(block, field, frame, places);
    }
  }

  void addField(const FrdResult& block, const MappedField& field, odbstore::FrameId frame, RowPlaces& places) {
    fields_.insert(field.name);
    const odbstore::FieldId id = writer_.addField(frame, field.name, field.info);
    takeColumns(block, field.columns, rows_);
    if (!field.isTensor()) {
      writer_.addBlock(id, places.nodal(), std::span<const float>(rows_));
      return;
    }
    const odbstore::KeptRows rows = writer_.keepRows(rows_, static_cast<int>(field.columns.size()));
    for (const ElementNodalRows& group : places.elementNodal()) {
      writer_.addBlock(id, group.location, rows, group.places);
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
  const ProgressSink& progress_;
  FrdReader reader_;
  Deck deck_;
  std::optional<std::set<std::size_t>> selected_;
  odbstore::Writer writer_;
  Model model_;
  Frames frames_;
  std::size_t resultCount_ = 0;
  bool isSelected_ = true;   // the result block being read
  std::vector<float> rows_;  // of the block being written
  std::set<std::string> fields_;
  std::set<std::string> warnedOf_;  // names of blocks
};

}  // namespace

ImportSummary importCalculix(const ImportRequest& request, const WarningSink& warn, const ProgressSink& progress) {
  return Import(request, warn, progress).run();
}

std::string listCalculix(const ImportRequest& request, const WarningSink& warn) {
  const Deck deck = deckOf(request, warn, DeckDetail::sets);
  Contents contents = readContents(request.results, request.status, deck, warn);
  select(contents, request.selection, request.results);
  return contentsTable(contents, deck, request.results);
}

}  // namespace importers::calculix
