#include "show_options.h"

#include "complete_names.h"

namespace inspect {

tool::Command showCommand(ShowOptions& options) {
  tool::Command command("kolvex show", "show what is in an output database");
  command.synopsis("DATABASE [--step NAME]... [--field NAME]... [--set NAME]... [--all] [--json]")
      .synopsis("DATABASE --records CONFIG [--step NAME]... [--field NAME]... [--set NAME]... [--json]")
      .synopsis("DATABASE --config")
      .describe(
          "Prints the model, the steps with their mass and frames, the fields, the sets and the histories of a "
          "database, "
          "or the parts that are chosen. With --field come the blocks of each field, with --set the labels of each "
          "set. "
          "Only the catalog of the database is read, so large databases take no longer.")
      .describe(
          "NAME is a name, or a pattern as a shell has them: *, ?, [...]. Steps go by their number, from 1, as well.")
      .exitStatus(0, "done")
      .exitStatus(1, "the database or the configuration cannot be read, or has nothing of what is chosen")
      .exitStatus(2, "wrong usage")
      .example("kolvex show job.odb")
      .example("kolvex show job.odb --step 2 --field S")
      .example("kolvex show job.odb --config > extract.cfg")
      .example("kolvex show job.odb --records extract.cfg | wc -l")
      .seeAlso("kolvex-check(1)")
      .seeAlso("kolvex-params(1)")
      .seeAlso("kolvex-quarnish(1)")
      .argument("DATABASE", options.database, "the database; .odb may be left out")
      .option(
          "--step", "NAME", [&options](const std::string& name) { options.steps.push_back(name); },
          "show this step only", tool::Completes::computed)
      .repeated()
      .option(
          "--field", "NAME", [&options](const std::string& name) { options.fields.push_back(name); },
          "show this field only, and its blocks", tool::Completes::computed)
      .repeated()
      .option(
          "--set", "NAME", [&options](const std::string& name) { options.sets.push_back(name); },
          "show this set only, and its labels", tool::Completes::computed)
      .repeated()
      .flag("--all", options.isAll, "show long lists of frames, sets and histories whole")
      .option("--records", "CONFIG", options.records,
              "print the names of the records that a run with this configuration writes", tool::Completes::file)
      .flag("--config", options.isConfiguration, "print a configuration for this database, with remarks")
      .flag("--json", options.isJson, "print JSON")
      .exclusive("--records", "--config")
      .exclusive("--config", "--json")
      .completeBy(completeNames);
  return command;
}

std::string refusalOf(const ShowOptions& options) {
  const bool isChosen = !options.steps.empty() || !options.fields.empty() || !options.sets.empty();
  if (options.isConfiguration && isChosen) return "--config is for the whole database";
  return {};
}

}  // namespace inspect
