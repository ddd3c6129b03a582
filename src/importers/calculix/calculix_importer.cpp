#include "importers/calculix/calculix_importer.h"

#include <fmt/core.h>

#include <filesystem>

#include "importers/calculix/calculix_source.h"

namespace importers::calculix {

namespace {

bool exists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

// The name of the job: "job", "job.", "job.frd", "job.inp" and "job.dat" mean the same.
std::string jobOf(const std::string& named) {
  for (const std::string ending : {".frd", ".inp", ".dat", ".sta", "."}) {
    if (named.size() > ending.size() && named.ends_with(ending)) return named.substr(0, named.size() - ending.size());
  }
  return named;
}

class CalculixImporter : public Importer {
 public:
  std::string resultFile(const std::string& named) const override {
    if (named.ends_with(".odb")) return named;
    return jobOf(named) + ".frd";
  }

  // A run that crashed in its first increment may have printed tables and no results.
  bool recognises(std::string_view start, const std::string& path) const override {
    if (start.empty()) return exists(jobOf(path) + ".dat") && exists(jobOf(path) + ".inp");
    return start.starts_with("    1C");
  }

  std::string beginning() const override { return "\"    1C\" on line 1"; }

  void addOptions(tool::Command& command) override {
    command.group("CalculiX")
        .option("--deck", "DECK", deck_, "the input deck with the sets (default: job.inp beside the results)",
                tool::Completes::file)
        .flag("--no-deck", withoutDeck_, "import no sets")
        .option("--dat", "TABLES", printed_, "the printed tables (default: job.dat beside the results)",
                tool::Completes::file)
        .flag("--no-dat", withoutPrinted_, "import no printed tables")
        .choice(
            "--stress-at", "PLACE", {"nodes", "integration-points"},
            [this](const std::string& place) {
              stressAt_ = place == "nodes" ? StressAt::nodes : StressAt::integrationPoints;
            },
            "which stresses, strains, ... get the plain names: at nodes (default) or integration-points")
        .number("--history-limit", "N", historyLimit_, 0, 1000000000,
                "make histories of printed tables with up to N rows (default: 1000)")
        .exclusive("--deck", "--no-deck")
        .exclusive("--dat", "--no-dat");
  }

  std::vector<std::string> inputs(const OpenRequest& request) const override {
    return {request.results, deckOf(request), jobOf(request.results) + ".sta", printedOf(request)};
  }

  std::unique_ptr<Source> open(const OpenRequest& request, const WarningSink& warn) override {
    CalculixRun run;
    run.results = request.results;
    run.status = jobOf(request.results) + ".sta";
    run.isStrict = request.isStrict;
    run.withMass = request.withMass;
    run.stressAt = stressAt_;
    run.historyLimit = historyLimit_;
    run.deck = existingDeck(request);
    run.printed = existingTables(request);
    std::unique_ptr<Source> source = openCalculix(run, warn);
    if (run.deck.empty() && !withoutDeck_) {
      warn(base::warning({request.results},
                         fmt::format("there is no deck {}, so no sets are imported", deckOf(request))));
    }
    return source;
  }

 private:
  std::string deckOf(const OpenRequest& request) const {
    return deck_.empty() ? jobOf(request.results) + ".inp" : deck_;
  }

  std::string printedOf(const OpenRequest& request) const {
    return printed_.empty() ? jobOf(request.results) + ".dat" : printed_;
  }

  // The deck to read: the one asked for, else the one beside the results if there is one.
  std::string existingDeck(const OpenRequest& request) const {
    if (withoutDeck_) return {};
    if (exists(deckOf(request))) return deckOf(request);
    if (!deck_.empty()) throw ImportError(deck_, 0, "the deck does not exist");
    return {};
  }

  // A run that prints nothing need not have any.
  std::string existingTables(const OpenRequest& request) const {
    if (withoutPrinted_) return {};
    if (exists(printedOf(request))) return printedOf(request);
    if (!printed_.empty()) throw ImportError(printed_, 0, "the file does not exist");
    return {};
  }

  std::string deck_;
  bool withoutDeck_ = false;
  std::string printed_;
  bool withoutPrinted_ = false;
  StressAt stressAt_ = StressAt::nodes;
  std::size_t historyLimit_ = 1000;
};

}  // namespace

std::unique_ptr<Importer> makeImporter() { return std::make_unique<CalculixImporter>(); }

}  // namespace importers::calculix
