#include "collect_options.h"

namespace batch {

tool::Command collectCommand(CollectOptions& options) {
  tool::Command command("kolvex batch collect", "print one table of all records of a batch");
  command.synopsis("DIR [--to FORM] [-o FILE] [--records PATTERN]... [--long]")
      .describe(
          "Writes a row for each input of the batch, with the columns input, status and reason and one for each "
          "record. "
          "Inputs that have failed have their row as well, and so have those that are running or missing. "
          "Numbers are as the extraction has written them.")
      .describe(
          "A name that an input has several times has several columns, the second called NAME#2. A table that is "
          "written "
          "to a file appears under its name when it is complete.")
      .exitStatus(0, "the table is written; a line on standard error says if inputs are running or missing")
      .exitStatus(1, "DIR is not the directory of a batch, or the table cannot be written")
      .exitStatus(2, "wrong usage")
      .example("kolvex batch collect results > results.csv")
      .example("kolvex batch collect results --to sqlite -o results.db --records '*__S__mises__max'")
      .example("kolvex batch collect results --to json --long")
      .seeAlso("kolvex-batch(1)")
      .seeAlso("kolvex-batch-status(1)")
      .argument("DIR", options.directory, "the directory of the batch", tool::Completes::directory)
      .choice(
          "--to", "FORM", {"csv", "sqlite", "json"}, [&options](const std::string& form) { options.form = form; },
          "the form of the table: csv (default), sqlite, json")
      .option("-o,--output", "FILE", options.output, "write to this file instead of standard output",
              tool::Completes::file)
      .option(
          "--records", "PATTERN", [&options](const std::string& text) { options.patterns.push_back(text); },
          "only records whose name matches, as in a shell: *, ?, [...]")
      .repeated()
      .flag("--long", options.isLong, "a row for each record, with the columns record and value");
  return command;
}

}  // namespace batch
