#include "run_options.h"

#include <fmt/core.h>

#include <algorithm>

#include "tool/quantities.h"

namespace batch {

namespace {

void addPage(tool::Command& command) {
  command.synopsis("PATH... --config FILE --out DIR [options]")
      .synopsis("--from LIST --config FILE --out DIR [options]")
      .synopsis("PATH... --config FILE --out DIR --slurm [options] [-- SBATCH-OPTION...]")
      .synopsis("collect DIR [options]")
      .synopsis("show DIR INPUT [options]")
      .synopsis("status DIR [options]")
      .describe(
          "Extracts from each input in a process of its own, several side by side. An input is an output database, or "
          "the results of a solver, which are imported first. Its results are in DIR/<id>: params.txt and "
          "paramsdone.txt of the extraction, status, log.")
      .describe(
          "The same command again does what is missing and no more: after a crash, a kill, a full disk, and with "
          "inputs "
          "that have changed. Inputs that have failed are tried again. Two at once share the work.")
      .subcommand("collect", "print one table of all records of a batch")
      .subcommand("show", "print what one input of a batch has left")
      .subcommand("status", "show the progress of a batch")
      .exitStatus(0, "all inputs are done")
      .exitStatus(1, "an input has failed, or the batch cannot go on")
      .exitStatus(2, "wrong usage")
      .exitStatus(3, "interrupted; the same command goes on from there")
      .example("kolvex batch 'runs/*/job.odb' --config extract.cfg --out results --keep-going")
      .example("kolvex batch --from list.txt --config extract.cfg --out results -j 8 --timeout 10m --memory 4G")
      .example("kolvex batch collect results --to csv -o results.csv")
      .seeAlso("kolvex-batch-collect(1)")
      .seeAlso("kolvex-batch-show(1)")
      .seeAlso("kolvex-batch-status(1)")
      .seeAlso("kolvex-quarnish(1)")
      .seeAlso("kolvex-import(1)");
}

void addLimits(tool::Command& command, RunOptions& options) {
  command
      .option(
          "--timeout", "TIME", [&options](const std::string& text) { options.timeout = tool::durationFrom(text); },
          "end an input that takes longer than this: seconds, or 5m, 2h")
      .option(
          "--memory", "SIZE", [&options](const std::string& text) { options.memory = tool::bytesFrom(text); },
          "end an input whose programs take more memory than this: bytes, or 500M, 4G")
      .number("--retries", "N", options.retries, 0, 1000, "try an input that fails N times more (default: 0)")
      .flag("-k,--keep-going", options.keepsGoing, "go on after a failure; without it no more inputs are started")
      .flag("--skip-failed", options.skipsFailed, "leave inputs that have failed before as they are")
      .option(
          "--grace", "TIME", [&options](const std::string& text) { options.grace = tool::durationFrom(text); },
          "when interrupted, give running inputs this long to finish (default: end them)");
}

void addSlurm(tool::Command& command, RunOptions& options) {
  command.group("Slurm")
      .flag("--slurm", options.isSlurm,
            "submit a job array that runs the inputs in slices, and a job after it that collects into DIR/table.csv; "
            "arguments after -- go to sbatch")
      .number("--tasks", "N", options.tasks, 1, 100'000, "with --slurm: tasks of the array (default: 10)")
      .flag("--wait", options.isWaiting, "with --slurm: wait until both jobs have ended and print the result");
}

}  // namespace

tool::Command runCommand(RunOptions& options) {
  tool::Command command("kolvex batch", "extract from many databases or results");
  addPage(command);
  command
      .optionalArguments("PATH", options.paths,
                         "a database, a file of results, or a pattern of such; - reads a list from standard input")
      .option("--from", "LIST", options.list, "read names of inputs from a file, one a line; - is standard input",
              tool::Completes::file)
      .option("--config", "FILE", options.configuration, "the configuration file, which says what is extracted",
              tool::Completes::file)
      .option("--out", "DIR", options.directory, "the directory of the batch; created if it does not exist",
              tool::Completes::directory)
      .number("-j,--jobs", "N", options.jobs, 1, 4096, "run N inputs side by side (default: one for each processor)");
  addLimits(command, options);
  command
      .option(
          "--import-option", "OPTION",
          [&options](const std::string& option) { options.importOptions.push_back(option); },
          "hand this to `kolvex import`, as --import-option=--no-mass")
      .repeated()
      .flag("--keep-databases", options.keepsDatabases, "keep databases that are imported, as DIR/<id>/database.odb")
      .flag("--sync", options.isSynced, "flush each result to disk before the next is counted")
      .flag("--pack", options.isPacked,
            "append the results to one file for each slice, DIR/packs/I-of-N, instead of a directory for each input")
      .flag("--json", options.isJson, "print every event as a JSON object, one a line")
      .number("--index", "I", options.index, 0, 1'000'000'000, "with --size: run slice I, from 0")
      .number("--size", "N", options.size, 1, 1'000'000'000, "cut the inputs into N slices");
  addSlurm(command, options);
  return command;
}

std::string refusalOf(const RunOptions& options) {
  if (options.configuration.empty()) return "--config is missing";
  if (options.directory.empty()) return "--out is missing";
  if (options.paths.empty() && options.list.empty()) return "no input is named";
  if (options.index >= options.size) return "--index must be below --size";
  if (options.isSlurm && options.size > 1) return "--slurm makes the slices itself";
  if (options.isWaiting && !options.isSlurm) return "--wait goes with --slurm";
  return "";
}

std::vector<std::string> takeSlurmOptions(std::vector<std::string>& arguments) {
  const auto end = std::find(arguments.begin(), arguments.end(), "--");
  if (end == arguments.end() || std::find(arguments.begin(), end, "--slurm") == end) return {};
  std::vector<std::string> options(end + 1, arguments.end());
  arguments.erase(end, arguments.end());
  return options;
}

std::vector<std::string> forwardedArguments(const RunOptions& options) {
  // An array is not stopped by a failure: its other tasks would not hear of it.
  std::vector<std::string> arguments = {"--keep-going"};
  const auto seconds = [](std::chrono::milliseconds time) {
    return fmt::format("{:.3f}", static_cast<double>(time.count()) / 1e3);
  };
  if (options.timeout.count() > 0) arguments.push_back("--timeout=" + seconds(options.timeout));
  if (options.memory > 0) arguments.push_back(fmt::format("--memory={}", options.memory));
  if (options.retries > 0) arguments.push_back(fmt::format("--retries={}", options.retries));
  if (options.skipsFailed) arguments.emplace_back("--skip-failed");
  if (options.keepsDatabases) arguments.emplace_back("--keep-databases");
  if (options.isSynced) arguments.emplace_back("--sync");
  if (options.isPacked) arguments.emplace_back("--pack");
  if (options.grace.count() > 0) arguments.push_back("--grace=" + seconds(options.grace));
  for (const std::string& option : options.importOptions) arguments.push_back("--import-option=" + option);
  return arguments;
}

}  // namespace batch
