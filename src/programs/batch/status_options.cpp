#include "status_options.h"

#include "show_status.h"
#include "tool/quantities.h"

namespace batch {

tool::Command statusCommand(StatusOptions& options) {
  tool::Command command("kolvex batch status", "show the progress of a batch");
  command.synopsis("DIR [--json] [--watch [--every TIME]]")
      .describe(
          "Counts the inputs that are done, have failed (by reason), are running, and are missing: not begun, given "
          "back, or done with another configuration. Takes no lock and does not disturb runners.")
      .exitStatus(0, "all inputs are done")
      .exitStatus(1, "no input is left, and some have failed; or DIR is not the directory of a batch")
      .exitStatus(2, "wrong usage")
      .exitStatus(kUnfinished, "inputs are running or missing")
      .example("kolvex batch status results")
      .example("kolvex batch status results --watch --every 10s")
      .seeAlso("kolvex-batch(1)")
      .seeAlso("kolvex-batch-collect(1)")
      .argument("DIR", options.directory, "the directory of the batch", tool::Completes::directory)
      .flag("--json", options.isJson, "print a JSON object")
      .flag("--watch", options.isWatched, "repeat until no input is running or missing")
      .option(
          "--every", "TIME", [&options](const std::string& text) { options.pause = tool::durationFrom(text); },
          "with --watch: the time between updates (default: 2s)");
  return command;
}

}  // namespace batch
