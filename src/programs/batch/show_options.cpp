#include "show_options.h"

namespace batch {

tool::Command showCommand(ShowOptions& options) {
  tool::Command command("kolvex batch show", "print what one input of a batch has left");
  command.synopsis("DIR INPUT [--log | --status]")
      .describe(
          "Prints the params.txt of an input, byte for byte, from its directory or from the pack that it is in. The "
          "newest result counts, whatever the configuration.")
      .exitStatus(0, "it is printed")
      .exitStatus(1, "the batch has no such input, or the input has no such result")
      .exitStatus(2, "wrong usage")
      .example("kolvex batch show results runs/0017/job.odb > params.txt")
      .example("kolvex batch show results 0017.job-6hd0p1v2k9wq --log")
      .seeAlso("kolvex-batch(1)")
      .seeAlso("kolvex-batch-collect(1)")
      .argument("DIR", options.directory, "the directory of the batch", tool::Completes::directory)
      .argument("INPUT", options.input, "the path of an input, or its id", tool::Completes::file)
      .flag("--log", options.wantsLog, "print what the programs have said")
      .flag("--status", options.wantsStatus, "print the record of what became of the input")
      .exclusive("--log", "--status");
  return command;
}

}  // namespace batch
