#include "locate_options.h"

namespace inspect {

tool::Command locateCommand(LocateOptions& options) {
  tool::Command command("kolvex locate", "say where and when the extremes of records are");
  command.synopsis("DATABASE RECORD... [options]")
      .synopsis("DATABASE --params FILE [RECORD...] [options]")
      .describe(
          "For each record that is a largest or smallest value: the step and frame, the instance, the labels of node "
          "and "
          "element, the integration point, the coordinates, the value with all its digits, how many places have it, "
          "and the "
          "next places in its order. RECORD is a name or a pattern with * and ?; a name that occurs twice gives both.")
      .describe(
          "Engineering extremes depend on the configuration: with --config they are found as the extraction finds "
          "them, "
          "with the number of values that they leave out.")
      .exitStatus(0, "all records are located")
      .exitStatus(1, "a file cannot be read")
      .exitStatus(2, "wrong usage")
      .exitStatus(3, "a record is not of this database, is not an extreme, or has no value; the others are located")
      .example("kolvex locate job.odb Step_1__Frame_4__RIM__S__mises__max")
      .example("kolvex locate job.odb --params params.txt '*__mises__max' --json")
      .example("kolvex locate job.odb 'Step_1__Frame_4__S__*' --config extract.cfg --over-time")
      .seeAlso("kolvex-show(1)")
      .seeAlso("kolvex-export(1)")
      .seeAlso("kolvex-quarnish(1)");
  command.argument("DATABASE", options.database, "the database")
      .optionalArguments("RECORD", options.names, "the name of a record, or a pattern", tool::Completes::nothing)
      .option("--params", "FILE", options.params, "the records of this file, of which RECORD chooses",
              tool::Completes::file)
      .option("--config", "FILE", options.configuration, "the configuration that the records are of",
              tool::Completes::file)
      .number("--next", "N", options.next, 0, 1000, "list the next N places (default: 10)")
      .flag("--over-time", options.isOverTime, "find the extreme in all frames of the step that have the field")
      .flag("--json", options.isJson, "print a JSON object");
  return command;
}

}  // namespace inspect
