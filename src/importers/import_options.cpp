#include "importers/import_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace importers {

namespace {

constexpr int kUsageError = 2;

std::string withoutEnding(std::string name) {
  for (const std::string ending : {".frd", ".inp", ".dat", "."}) {
    if (name.size() > ending.size() && name.ends_with(ending)) return name.substr(0, name.size() - ending.size());
  }
  return name;
}

void addSelection(CLI::App& app, Selection& selection) {
  app.add_option("--field", selection.fields, "Import this field only, in any case; may be repeated")
      ->allow_extra_args(false)
      ->type_name("NAME");
  app.add_option("--step", selection.steps, "Import this step only; may be repeated, or be a list \"1,3\"")
      ->allow_extra_args(false)
      ->delimiter(',')
      ->check(CLI::PositiveNumber)
      ->type_name("N");
  const auto takeFrames = [&selection](const std::string& text) {
    const auto choice = frameChoiceFrom(text);
    if (!choice) throw CLI::ValidationError("--frames", "\"" + text + "\" is none of first, last, all, N, N-M");
    selection.frames = *choice;
  };
  app.add_option_function<std::string>("--frames", takeFrames,
                                       "Of every step import the frames first, last, all, N or N-M")
      ->type_name("FRAMES");
}

}  // namespace

ImportOptions parseImportOptions(std::vector<std::string> arguments) {
  ImportOptions options;
  CLI::App app("Brings the results of a CalculiX run into an output database.", "kolvex import");
  app.set_version_flag("--version", std::string("kolvex import ") + KOLVEX_VERSION);
  app.add_option("job", options.input, "The result file, job.frd, or the name of the job")->required();
  app.add_option("-o,--output", options.output, "The database to write (default: job.odb beside the results)");
  CLI::Option* const deck =
      app.add_option("--deck", options.deck, "The input deck with the sets (default: job.inp beside the results)");
  app.add_flag("--no-deck", options.withoutDeck, "Import no sets")->excludes(deck);
  CLI::Option* const printed =
      app.add_option("--dat", options.printed, "The printed tables (default: job.dat beside the results)");
  app.add_flag("--no-dat", options.withoutPrinted, "Import no printed tables")->excludes(printed);
  const auto takePlace = [&options](const std::string& text) {
    if (text != "nodes" && text != "integration-points") {
      throw CLI::ValidationError("--stress-at", "\"" + text + "\" is none of nodes, integration-points");
    }
    options.stressAt = text == "nodes" ? calculix::StressAt::nodes : calculix::StressAt::integrationPoints;
  };
  app.add_option_function<std::string>("--stress-at", takePlace,
                                       "Where stresses, strains, ... of the plain names are: nodes (default) or "
                                       "integration-points")
      ->type_name("PLACE");
  app.add_option("--history-limit", options.historyLimit,
                 "Make histories of printed tables with up to N rows (default: 1000)")
      ->check(CLI::Range(0, 1000000000))
      ->type_name("N");
  app.add_flag("!--no-mass", options.withMass, "Make no mass properties of the deck");
  app.add_flag("--strict", options.isStrict, "Take a result file that is cut off for an error");
  app.add_flag("--compress", options.compress, "Store results packed: a small file that is slower to read");
  app.add_flag("--checksum", options.checksum, "Store a checksum with every frame of results");
  app.add_flag("--list", options.isList, "Show what would be imported, and write nothing");
  addSelection(app, options.selection);
  try {
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream err;
    options.isDone = true;
    options.status = app.exit(error, out, err) == 0 ? 0 : kUsageError;
    options.message = options.status == 0 ? out.str() : err.str();
  }
  return options;
}

JobFiles jobFiles(const ImportOptions& options) {
  const std::string stem = withoutEnding(options.input);
  return {stem + ".frd", options.deck.empty() ? stem + ".inp" : options.deck, stem + ".sta",
          options.printed.empty() ? stem + ".dat" : options.printed,
          options.output.empty() ? stem + ".odb" : options.output};
}

}  // namespace importers
