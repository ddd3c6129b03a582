#include "importers/calculix/import_calculix.h"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <set>

#include "importers/calculix/contents.h"
#include "importers/calculix/contents_table.h"
#include "importers/calculix/deck.h"
#include "importers/calculix/frd_reader.h"
#include "importers/calculix/mass_properties.h"
#include "importers/calculix/model.h"
#include "importers/calculix/printed_histories.h"
#include "importers/calculix/printed_import.h"
#include "importers/calculix/step_writer.h"

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

Contents selectedContents(const ImportRequest& request, const Deck& deck, const WarningSink& warn) {
  Contents contents = readContents({request.results, request.status, request.printed}, request.stressAt, deck, warn);
  reportProblems(contents.printed, request.printed, request.isStrict, warn);
  select(contents, request.selection, request.results);
  return contents;
}

class Import {
 public:
  Import(const ImportRequest& request, const WarningSink& warn, const ProgressSink& progress)
      : request_(request),
        warn_(warn),
        progress_(progress),
        reader_(request.results),
        deck_(deckOf(request, warn, request.withMass ? DeckDetail::mass : DeckDetail::sets)),
        contents_(selectedContents(request, deck_, warn)),
        writer_(request.output, request.storage),
        model_(deck_, request.results, writer_) {
    std::optional<StepMass> mass;
    if (request.withMass) mass = massOf(deck_, warn);
    written_ = writeSteps(contents_, request.selection, deck_, request.withMass, mass, writer_);
    deck_.mesh.dropNodes();
    for (const ContentsBlock& block : contents_.blocks) {
      if (!block.isPrinted) wanted_[block.ordinal] = &block;
    }
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
    const int histories = importPrinted();
    if (!request_.deck.empty()) model_.addSets(warn_);
    if (progress_) progress_(reader_.size(), reader_.size());
    rows_ = {};  // completing the database takes as much again
    writer_.finish();
    const bool isCutOff = reader_.isCutOff() || contents_.printed.isCutOff;
    return {static_cast<int>(written_.steps.size()),
            static_cast<int>(written_.frames.size()),
            static_cast<int>(fields_.size()),
            histories,
            model_.setCount(),
            isCutOff ? endOfResults() : ""};
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

  // Finds the result block that comes next among the selected ones.
  bool startResult() {
    const auto wanted = wanted_.find(resultCount_++);
    block_ = wanted == wanted_.end() ? nullptr : wanted->second;
    return block_ != nullptr;
  }

  void take(const FrdResult& block) {
    if (!model_.hasNodes()) fail(block.line, "results come before the nodes that they belong to");
    if (block.rows == 0 && request_.selection.isEverything()) warnOnce(block, "has no rows and is left out");
    if (block_ == nullptr || block.labels.empty()) return;
    RowPlaces& places = model_.placesOf(block);
    for (const MappedField& field : block_->fields) {
      addField(block, field, written_.frames.at(block_->frame), places);
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

  // What the run has printed; the count of histories.
  int importPrinted() {
    if (contents_.printed.isCutOff) {
      const std::string text = "the file is cut off here; what is complete in it is imported";
      if (request_.isStrict) throw ImportError(request_.printed, contents_.printed.lastLine, text);
      warn_(fmt::format("{}: warning: {}", placeIn(request_.printed, contents_.printed.lastLine), text));
    }
    if (contents_.printed.tables.empty()) return 0;
    PrintedHistories histories(request_.printed, contents_.printed, request_.historyLimit, deck_, warn_);
    PrintedImport(request_.printed, contents_, model_, writer_, written_.frames).run(histories, fields_, progress_);
    return histories.write(writer_, written_.steps);
  }

  std::string endOfResults() const {
    return contents_.frames.lastPlace().empty() ? "the model" : contents_.frames.lastPlace();
  }

  void checkEnd() {
    const bool hasResults = !contents_.blocks.empty() || !contents_.printed.tables.empty();
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
  Contents contents_;
  odbstore::Writer writer_;
  Model model_;
  WrittenSteps written_;
  std::map<std::size_t, const ContentsBlock*> wanted_;  // of the result file, by their ordinals
  std::size_t resultCount_ = 0;
  const ContentsBlock* block_ = nullptr;  // the one being read, if it is selected
  std::vector<float> rows_;               // of the block being written
  std::set<std::string> fields_;
  std::set<std::string> warnedOf_;  // names of blocks
};

}  // namespace

ImportSummary importCalculix(const ImportRequest& request, const WarningSink& warn, const ProgressSink& progress) {
  return Import(request, warn, progress).run();
}

std::string listCalculix(const ImportRequest& request, const WarningSink& warn) {
  const Deck deck = deckOf(request, warn, DeckDetail::sets);
  return contentsTable(selectedContents(request, deck, warn), deck, request.results);
}

}  // namespace importers::calculix
