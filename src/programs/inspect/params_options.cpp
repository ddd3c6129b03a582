#include "params_options.h"

namespace inspect {

tool::Command paramsCommand(ParamsOptions& options) {
  tool::Command command("kolvex params", "turn the records of a run into a table");
  command.synopsis("FILE [PATTERN]... [--to FORM] [-o FILE] [--odb DATABASE [--config CONFIG]] [--require NAME]...")
      .describe(
          "Reads params.txt as the extraction has written it and writes its records, or those whose names match a "
          "pattern, as a table with the columns name and value. Nothing is written unless paramsdone.txt stands beside "
          "FILE and is not older.")
      .describe(
          "With --odb each name is taken apart by the database that it comes from: kind, step, frame, frameValue, "
          "setKind, ownerKind, owner, set, field, quantity, extreme, region, output, label. Where a name can be "
          "several "
          "records, only what they have in common is given; --config, the configuration of the run, tells more of "
          "them apart.")
      .exitStatus(0, "the table is written")
      .exitStatus(1, "a file cannot be read or written, or no name is one of the database")
      .exitStatus(2, "wrong usage")
      .exitStatus(kNotMarked, "paramsdone.txt is missing, is not that of a run, or is older than FILE")
      .exitStatus(kNotThere, "a record that is required is not there")
      .example("kolvex params params.txt --to csv > records.csv")
      .example("kolvex params params.txt --to sqlite -o records.db --odb job.odb")
      .example("kolvex params params.txt '*__S__mises__max' --to dakota -o results.out")
      .seeAlso("kolvex-quarnish(1)")
      .seeAlso("kolvex-batch-collect(1)")
      .argument("FILE", options.file, "params.txt, or the directory that it is in")
      .optionalArguments("PATTERN", options.patterns, "only records whose name matches, as in a shell: *, ?, [...]",
                         tool::Completes::nothing)
      .choice(
          "--to", "FORM", {"csv", "json", "sqlite", "dakota"},
          [&options](const std::string& form) { options.form = form; },
          "the form of the table: csv (default), json, sqlite, or dakota for a results file of Dakota")
      .option("-o,--output", "FILE", options.output, "write to this file instead of standard output",
              tool::Completes::file)
      .option("--odb", "DATABASE", options.database, "take names apart by this database; .odb may be left out",
              tool::Completes::file)
      .option("--config", "CONFIG", options.configuration, "with --odb: the configuration of the run",
              tool::Completes::file)
      .option(
          "--require", "NAME", [&options](const std::string& name) { options.required.push_back(name); },
          "fail unless there is a record of this name; may be a pattern")
      .repeated()
      .flag("--unmarked", options.isUnmarked, "do not ask for paramsdone.txt");
  return command;
}

std::string refusalOf(const ParamsOptions& options) {
  if (options.form == "sqlite" && options.output.empty()) return "--to sqlite needs -o FILE";
  if (!options.configuration.empty() && options.database.empty()) return "--config needs --odb DATABASE";
  if (options.form == "dakota" && !options.database.empty()) return "--to dakota writes no parts of names";
  return {};
}

}  // namespace inspect
