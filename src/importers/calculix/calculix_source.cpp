#include "importers/calculix/calculix_source.h"

#include <fmt/format.h>

#include <optional>
#include <set>
#include <variant>

#include "importers/calculix/contents.h"
#include "importers/calculix/deck.h"
#include "importers/calculix/frd_reader.h"
#include "importers/calculix/mass_properties.h"
#include "importers/calculix/printed_histories.h"
#include "importers/calculix/printed_import.h"
#include "importers/calculix/result_delivery.h"
#include "importers/calculix/run_outline.h"
#include "importers/calculix/run_sets.h"
#include "importers/run/sink.h"

namespace importers::calculix {

namespace {

class CalculixSource : public Source {
 public:
  CalculixSource(const CalculixRun& run, const WarningSink& warn) : run_(run), warn_(warn) {
    const FrdReader reader(run_.results);  // refuses what is no such file before anything else is read
    title_ = reader.header().title;
    producer_ = reader.header().program;
  }

  Outline outline() override {
    if (!run_.deck.empty())
      deck_ = readDeck(run_.deck, warn_, {run_.withMass ? DeckDetail::mass : DeckDetail::sets, run_.isStrict});
    if (run_.withMass) mass_ = massOf(deck_, warn_);
    deck_.mesh.dropCoordinates();
    Outline outline = readOutline();
    checkEnd(outline);
    return outline;
  }

  void deliver(const Choice& /*choice*/, Sink& sink, const ProgressSink& progress) override {
    for (const auto& [block, line] : contents_->emptyBlocks) {
      warn_(fmt::format("{}: warning: {} has no rows and is left out", placeIn(run_.results, line), block));
    }
    contents_->nodes = {};
    contents_->mesh = {};
    ResultDelivery(run_.results, deck_, plan_, leftOut_, sink).run(progress);
    sets_->deliver(sink);
    if (contents_->printed.tables.empty()) return;
    PrintedHistories histories(run_.printed, contents_->printed, run_.historyLimit, deck_, warn_);
    PrintedImport(run_.printed, *contents_, plan_, sink).run(histories, progress);
    histories.deliver(plan_.steps, sink);
  }

  bool leaveOutDamage(Outline& outline) override {
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
        {run_.results, run_.status, run_.printed}, run_.stressAt, deck_,
        [this](std::size_t result, const ImportError& error) { return leaveOut(result, error); }, leftOut_, warn_));
    Outline outline = outlineOf(*contents_, deck_, run_.withMass, mass_, plan_);
    outline.title = deck_.heading.empty() ? title_ : deck_.heading;
    outline.producer = producer_;
    if (!sets_) sets_.emplace(deck_, contents_->nodes, contents_->mesh, warn_);
    deck_.mesh.dropNodes();
    sets_->addTo(outline);
    if (contents_->isCutOff || contents_->printed.isCutOff) outline.truncatedAfter = endOfResults();
    return outline;
  }

  bool leaveOut(std::size_t result, const ImportError& error) {
    if (run_.isStrict) return false;
    if (!leftOut_.insert(result).second) return true;
    warn_(fmt::format("{}: warning: {}; the block is left out", placeIn(run_.results, error.line()), error.reason()));
    return true;
  }

  std::string endOfResults() const {
    return contents_->frames.lastPlace().empty() ? "the model" : contents_->frames.lastPlace();
  }

  // What is missing at the ends of the files.
  void checkEnd(const Outline& outline) const {
    const bool hasResults = !contents_->blocks.empty() || !contents_->printed.tables.empty();
    if (contents_->isCutOff && contents_->mesh.groups.empty() && !hasResults) {
      fail(contents_->lastLine, "the file ends before its model is complete");
    }
    if (contents_->nodes.empty()) fail(contents_->lastLine, "there is no model");
    if (contents_->isCutOff) {
      complain(run_.results, contents_->lastLine,
               "the file is cut off here; what is complete in it ends behind " + outline.truncatedAfter);
    } else if (!hasResults) {
      warn_(fmt::format("{}: warning: the file holds no results", run_.results));
    }
    if (contents_->printed.isCutOff) {
      complain(run_.printed, contents_->printed.lastLine,
               "the file is cut off here; what is complete in it is imported");
    }
  }

  [[noreturn]] void fail(std::int64_t line, const std::string& reason) const {
    throw ImportError(run_.results, line, reason);
  }

  void complain(const std::string& file, std::int64_t line, const std::string& text) const {
    if (run_.isStrict) throw ImportError(file, line, text);
    warn_(fmt::format("{}: warning: {}", placeIn(file, line), text));
  }

  CalculixRun run_;
  const WarningSink& warn_;
  std::string title_;
  std::string producer_;
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
