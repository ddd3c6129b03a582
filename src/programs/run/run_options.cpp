#include "run_options.h"

#include "tool/quantities.h"

namespace single_run {

tool::Command runCommand(RunOptions& options) {
  tool::Command command("kolvex run", "import results and extract from them");
  command.synopsis("JOB --config FILE [--out DIR] [options]")
      .describe(
          "Imports the results of a run, extracts from them, and writes the records into a directory of its own: what "
          "a "
          "script calls. The status is 0 only where all records are there. JOB may also be an output database.")
      .describe(
          "The directory gets params.txt, paramsdone.txt, what the programs have said (log) and, when all is over, "
          "what "
          "became of it (status). What an earlier run has left of these is removed first.")
      .exitStatus(0, "all records are written")
      .exitStatus(1, "there are no records: a file cannot be read or written, or a program has failed")
      .exitStatus(2, "wrong usage: nothing is made")
      .exitStatus(3, "interrupted; there are no records")
      .exitStatus(
          4,
          "records are written, but some are missing: the results end too early, are damaged or of different runs, "
          "there is no record at all, or none of a name that is required")
      .example("kolvex run job --config extract.cfg")
      .example("kolvex run runs/17/job.frd --config extract.cfg --out records/17 --require '*__S__mises__max' --json")
      .seeAlso("kolvex-batch(1)")
      .seeAlso("kolvex-import(1)")
      .seeAlso("kolvex-quarnish(1)");
  command.argument("JOB", options.input, "the result file, the name of the job, or a database")
      .option("--config", "FILE", options.configuration, "the configuration file, which says what is extracted",
              tool::Completes::file)
      .option("--out", "DIR", options.directory,
              "the directory; made where there is none (default: JOB-records in the working directory)",
              tool::Completes::directory)
      .option(
          "--require", "NAME", [&options](const std::string& name) { options.required.push_back(name); },
          "a record that has to be there; a pattern with * and ? too")
      .repeated()
      .option(
          "--timeout", "TIME", [&options](const std::string& text) { options.timeout = tool::durationFrom(text); },
          "give up after this time: seconds, or 5m, 2h")
      .option(
          "--memory", "SIZE", [&options](const std::string& text) { options.memory = tool::bytesFrom(text); },
          "give up where the programs take more memory than this: bytes, or 500M, 4G")
      .option(
          "--import-option", "OPTION",
          [&options](const std::string& option) { options.importOptions.push_back(option); },
          "hand this to `kolvex import`, as --import-option=--no-mass")
      .repeated()
      .flag("--keep-database", options.keepsDatabase, "keep the database that is imported, as DIR/database.odb")
      .flag("--json", options.isJson, "print the summary as a JSON object");
  return command;
}

}  // namespace single_run
