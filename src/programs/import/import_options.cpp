#include "import_options.h"

#include <optional>
#include <sstream>

#include "complete_names.h"
#include "importers/input/text_fields.h"

namespace importers {

namespace {

void takeSteps(Selection& selection, const std::string& text) {
  std::istringstream list(text);
  for (std::string item; std::getline(list, item, ',');) {
    const std::optional<int> step = integerFrom(item);
    if (!step || *step < 1) throw tool::UsageError("\"" + text + "\" is not a step number or a list of them, \"1,3\"");
    selection.steps.push_back(*step);
  }
  if (text.empty() || text.back() == ',') throw tool::UsageError("a step number is missing");
}

void takeFrames(Selection& selection, const std::string& text) {
  const std::optional<FrameChoice> choice = frameChoiceFrom(text);
  if (!choice) throw tool::UsageError("\"" + text + "\" is not one of first, last, all, N, N-M");
  selection.frames = *choice;
}

void takeRename(FieldNaming& naming, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
    throw tool::UsageError("\"" + text + "\" is not an old and a new name, \"stress=S\"");
  }
  naming.renames.emplace_back(text.substr(0, equals), text.substr(equals + 1));
}

void addPage(tool::Command& command) {
  command.synopsis("JOB [-o DATABASE] [options]")
      .synopsis("JOB --list [--json] [options]")
      .synopsis("--formats")
      .describe(
          "Reads the results of a finite-element run and writes an output database that `kolvex quarnish` extracts "
          "from. "
          "JOB is the result file or the name of the job; its format is recognised by content. Nothing is "
          "written under the database's name before the database is complete.")
      .exitStatus(0, "the database is written or the list is printed, possibly with warnings")
      .exitStatus(1, "a file cannot be read or written, or the selection is empty; no database is written")
      .exitStatus(2, "wrong usage")
      .example("kolvex import job")
      .example("kolvex import job.frd --list")
      .example("kolvex import job --field S --field U --frames last -o last.odb")
      .seeAlso("kolvex-quarnish(1)")
      .seeAlso("kolvex-verify(1)");
}

}  // namespace

tool::Command importCommand(ImportOptions& options, const std::vector<KnownFormat>& formats) {
  tool::Command command("kolvex import", "bring the results of a run into an output database");
  addPage(command);
  Selection& selection = options.selection;
  std::vector<std::string> names;
  for (const KnownFormat& known : formats) names.emplace_back(known.format->name);
  command.optionalArgument("JOB", options.input, "the result file, or the name of the job")
      .option("-o,--output", "DATABASE", options.output, "the database to write (default: job.odb beside the results)",
              tool::Completes::file)
      .choice(
          "--format", "NAME", names, [&options](const std::string& name) { options.format = name; },
          "the format of the results (default: recognised by content)")
      .flag("--formats", options.isFormats, "list the formats and exit")
      .flag("--list", options.isList, "show what would be imported, and write nothing")
      .flag("--json", options.isJson, "with --list: as JSON")
      .option(
          "--field", "NAME", [&selection](const std::string& name) { selection.fields.push_back(name); },
          "import this field only (upper or lower case)", tool::Completes::computed)
      .repeated()
      .option(
          "--set", "NAME", [&selection](const std::string& name) { selection.sets.push_back(name); },
          "import this set only (upper or lower case)", tool::Completes::computed)
      .repeated()
      .option(
          "--step", "N", [&selection](const std::string& text) { takeSteps(selection, text); },
          "import this step only; a list, \"1,3\", too", tool::Completes::computed)
      .repeated()
      .option(
          "--frames", "FRAMES", [&selection](const std::string& text) { takeFrames(selection, text); },
          "of every step import the frames first, last, all, N or N-M")
      .flag(
          "--no-mass", [&options] { options.withMass = false; }, "store no mass properties")
      .flag("--strict", options.isStrict, "treat results that are truncated or not understood as an error")
      .flag("--compress", options.compress, "store results packed: a small file that is slower to read")
      .flag("--checksum", options.checksum, "store a checksum with every frame of results")
      .option(
          "--rename", "OLD=NEW", [&options](const std::string& text) { takeRename(options.naming, text); },
          "give a field another name")
      .repeated()
      .completeBy(completeNames)
      .group("Formats with a name for each component")
      .flag("--keep-names", options.naming.keepNames, "do not call stresses S, strains E and displacements U")
      .flag(
          "--no-group", [&options] { options.shapes.isGrouped = false; }, "leave all components scalars of their own")
      .flag("--group-numbers", options.shapes.withNumbers,
            "take names with numbers, _1 _2 _3 and _11 to _33, for components too")
      .exclusive("--no-group", "--group-numbers");
  for (const KnownFormat& known : formats) {
    if (known.importer) known.importer->addOptions(command);
  }
  return command;
}

std::string outputOf(const ImportOptions& options, const Importer& importer, const std::string& results) {
  return options.output.empty() ? importer.databaseName(results) : options.output;
}

}  // namespace importers
