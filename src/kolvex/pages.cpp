#include "kolvex/pages.h"

#include "kolvex/subcommands.h"

namespace kolvex {

namespace {

void addArguments(tool::Command& command) {
  const auto never = [](const std::string&) {};
  command
      .option("-odb", "DATABASE", never, "the database; .odb is appended unless the name contains it",
              tool::Completes::file)
      .option("-config", "FILE", never, "the configuration file, which says what is extracted", tool::Completes::file)
      .option("-elset", "NAME", never,
              "an element set of the assembly; the run ends if it does not exist. It does not limit the "
              "extraction",
              tool::Completes::computed)
      .flag(
          "-help", [] {}, "print the usage of the program");
}

}  // namespace

tool::Command launcherCommand() {
  tool::Command command("kolvex", "extract named scalars from the results of finite-element runs");
  command.synopsis("COMMAND [ARGUMENT...]")
      .describe(
          "Runs the program of the command with all arguments as they are; the exit status is the program's. "
          "`kolvex COMMAND --help` prints its options.")
      .exitStatus(1, "there is no such command")
      .exitStatus(2, "no command is given")
      .exitStatus(126, "the program of the command cannot be run")
      .exitStatus(127, "the program of the command is not installed")
      .example("kolvex import job")
      .example("kolvex quarnish -odb job.odb -config extract.cfg");
  for (const Subcommand& subcommand : subcommands()) {
    command.subcommand(std::string(subcommand.name), std::string(subcommand.summary));
    command.seeAlso("kolvex-" + std::string(subcommand.name) + "(1)");
  }
  return command;
}

tool::Command extractionCommand() {
  tool::Command command("kolvex quarnish", std::string(findSubcommand("quarnish")->summary));
  command.synopsis("-odb DATABASE -config FILE [-elset NAME]")
      .synopsis("-help")
      .describe(
          "Reduces the steps, frames, fields and histories of the database as the configuration asks, and writes one "
          "record a line to params.txt in the working directory: a name, a tab, the value. When that is complete, "
          "paramsdone.txt with the line \"Done\" appears. A marker of an earlier run is removed before anything else "
          "is looked at.")
      .describe(
          "The configuration counts from the first line with ODB EXTRACTIONS on. Keywords: EXTRACT_MASS, "
          "EXTRACT_HISTORY, MINMAX_HISTORY, EXTRACT_FIELD, EXTRACT_ALL, EXTRACT_STRESS, EXTRACT_SPATIAL, "
          "EXTRACT_ELEMENT, EXTRACT_FIELD_SETS, EXTRACT_FIELD_COMPONENTS, TENSOR_INVARIANTS, ENGINEERING_MAX, "
          "ENGINEERING_MIN, PERCENTAGE = P, DO_NOT_COMPUTE_VALUES.")
      .describe(
          "Only the first two characters of an option count; other arguments are ignored; of an option given twice "
          "the last counts. --help and --version are answered where they stand alone.")
      .exitStatus(0, "done; also where the database could not be read: paramsdone.txt is missing then")
      .exitStatus(1, "wrong arguments, or the results could not be written")
      .example("kolvex quarnish -odb job.odb -config extract.cfg")
      .seeAlso("kolvex-import(1)")
      .seeAlso("kolvex-verify(1)")
      .onlyLongHelp();
  addArguments(command);
  return command;
}

}  // namespace kolvex
