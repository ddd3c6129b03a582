#include "importers/calculix/calculix_source.h"

#include <fmt/core.h>

#include <filesystem>
#include <optional>
#include <set>
#include <variant>

#include "base/give_back.h"
#include "importers/calculix/contents.h"
#include "importers/calculix/dat/printed_histories.h"
#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/mass_properties.h"
#include "importers/calculix/deck_delivery.h"
#include "importers/calculix/frd/frd_reader.h"
#include "importers/calculix/printed_import.h"
#include "importers/calculix/result_delivery.h"
#include "importers/calculix/run_outline.h"
#include "importers/calculix/run_sets.h"
#include "importers/run/sink.h"

namespace importers::calculix {

namespace {

class CalculixSource : public Source {
 public:
  CalculixSource(const CalculixRun& run, const WarningSink& warn) : run_(run), warn_(onceOnly(warn)) {
    if (isMissing(run_.results) && !run_.printed.empty() && !run_.deck.empty()) return;
    const FrdReader reader(run_.results);  // rejects other files before anything else is read
    title_ = reader.header().title;
    producer_ = reader.header().program;
    hasResultFile_ = true;
  }

  Outline outline() override {
    readDeckFor(run_.withMass ? DeckDetail::mass : DeckDetail::sets);
    if (run_.withMass) mass_ = massOf(deck_, warn_);
    Outline outline = readOutline();
    checkEnd(outline);
    return outline;
  }

  void deliver(const Choice& /*choice*/, Sink& sink, const ProgressSink& progress) override {
    for (const auto& [block, line] : contents_->emptyBlocks) {
      warn_(base::warning({run_.results, line}, fmt::format("{} has no rows and is left out", block)));
    }
    for (const std::string& text : mixedAxes(*contents_, deck_)) {
      warn_(base::warning({run_.results}, text));
    }
    base::giveBack(contents_->nodes);
    contents_->mesh = {};
    sets_->deliver(sink);
    if (hasMeshOfDeck_) {
      deliverDeckMesh(deck_.mesh, run_.deck, sink);
    } else {
      ResultDelivery(run_.results, deck_, plan_, leftOut_, sink).run(progress);
    }
    if (contents_->printed.tables.empty()) return;
    PrintedHistories histories(run_.printed, contents_->printed, run_.historyLimit, deck_, warn_);
    PrintedImport(run_.printed, *contents_, plan_, sink).run(histories, progress);
    histories.deliver(plan_.steps, sink);
  }

  bool leaveOutDamage(Outline& outline) override {
    if (!hasResultFile_) return false;
    const std::size_t before = leftOut_.size();
    checkAllRows(run_.results,
                 [this](std::size_t result, const ImportError& error) { return leaveOut(result, error); });
    if (leftOut_.size() == before) return false;
    outline = readOutline();
    return true;
  }

 private:
  Outline readOutline() {
    contents_.emplace(readContents(
        {hasResultFile_ ? run_.results : "", run_.status, run_.printed}, run_.stressAt, deck_,
        [this](std::size_t result, const ImportError& error) { return leaveOut(result, error); }, leftOut_, warn_));
    reportProblems(contents_->printed, run_.printed, run_.isStrict, warn_);
    Outline outline = outlineOf(*contents_, deck_, run_.withMass, mass_, plan_);
    outline.title = deck_.heading.empty() ? title_ : deck_.heading;
    outline.producer = producer_;
    if (!hasResultFile_ && contents_->printed.tables.empty()) {
      std::error_code ignored;
      fail(0, fmt::format("the run left no results: this file {}{}",
                          std::filesystem::exists(run_.results, ignored) ? "is empty" : "does not exist",
                          run_.printed.empty() ? "" : fmt::format(", and {} holds no tables", run_.printed)));
    }
    if (contents_->nodes.empty() && !contents_->printed.tables.empty()) takeMeshOfDeck(outline);
    if (!sets_) sets_.emplace(deck_, contents_->nodes, contents_->mesh, warn_);
    if (!hasMeshOfDeck_) {
      deck_.mesh.dropCoordinates();
      deck_.mesh.dropNodes();
    }
    sets_->addTo(outline);
    if (contents_->isCutOff || contents_->printed.isCutOff) outline.truncatedAfter = endOfResults();
    return outline;
  }

  static bool isMissing(const std::string& path) {
    std::error_code failed;
    const auto size = std::filesystem::file_size(path, failed);
    return failed ? failed == std::errc::no_such_file_or_directory : size == 0;
  }

  void readDeckFor(DeckDetail detail) {
    if (!run_.deck.empty()) deck_ = readDeck(run_.deck, warn_, {detail, run_.isStrict});
  }

  // A run that failed in its first increment has printed tables and no results.
  void takeMeshOfDeck(Outline& outline) {
    if (deck_.mesh.coordinates.empty()) readDeckFor(DeckDetail::mass);
    if (deck_.mesh.coordinates.empty()) return;
    complain(run_.results, contents_->lastLine, "the result file holds no model; the mesh is taken from the deck");
    hasMeshOfDeck_ = true;
    contents_->nodes = nodesOfDeck(deck_.mesh);
    contents_->mesh = elementsOfDeck(deck_.mesh);
    outline.nodes = contents_->nodes.size();
    outline.elements = 0;
    for (const FrdElementGroup& group : contents_->mesh.groups) outline.elements += group.labels.size();
  }

  bool leaveOut(std::size_t result, const ImportError& error) {
    if (run_.isStrict) return false;
    if (!leftOut_.insert(result).second) return true;
    warn_(base::warning(error.place(), fmt::format("{}; the block is left out", error.reason())));
    return true;
  }

  std::string endOfResults() const {
    return contents_->frames.lastPlace().empty() ? "the model" : contents_->frames.lastPlace();
  }

  // What is missing at the ends of the files.
  void checkEnd(const Outline& outline) const {
    if (contents_->printed.isCutOff) {
      complain(run_.printed, contents_->printed.lastLine, "the file is truncated here; complete tables are imported");
    }
    const bool hasResults = !contents_->blocks.empty() || !contents_->printed.tables.empty();
    if (contents_->isCutOff && contents_->mesh.groups.empty() && !hasResults) {
      fail(contents_->lastLine, "the file ends before its model is complete");
    }
    if (contents_->nodes.empty()) fail(contents_->lastLine, "there is no model");
    if (hasMeshOfDeck_) return;
    if (contents_->isCutOff) {
      complain(run_.results, contents_->lastLine,
               "the file is truncated here; complete results end after " + outline.truncatedAfter);
    } else if (!hasResults) {
      warn_(base::warning({run_.results}, "the file holds no results"));
    }
  }

  [[noreturn]] void fail(std::int64_t line, const std::string& reason) const {
    throw ImportError(run_.results, line, reason);
  }

  void complain(const std::string& file, std::int64_t line, const std::string& text) const {
    if (run_.isStrict) throw ImportError(file, line, text);
    warn_(base::warning({file, line}, text));
  }

  CalculixRun run_;
  const WarningSink warn_;
  std::string title_;
  std::string producer_;
  bool hasResultFile_ = false;
  bool hasMeshOfDeck_ = false;
  Deck deck_;
  std::optional<RunSets> sets_;
  std::optional<StepMass> mass_;
  std::optional<Contents> contents_;
  Plan plan_;
  std::set<std::size_t> leftOut_;  // ordinals of result blocks
};

}  // namespace

std::unique_ptr<Source> openCalculix(const CalculixRun& run, const WarningSink& warn) {
  return std::make_unique<CalculixSource>(run, warn);
}

}  // namespace importers::calculix
