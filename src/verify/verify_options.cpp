#include "verify/verify_options.h"

namespace verify {

tool::Command verifyCommand(VerifyOptions& options) {
  tool::Command command("kolvex verify", "check an output database for damage");
  command.synopsis("[--quiet] FILE...")
      .describe(
          "Checks databases and names what is damaged in them: the bytes of each file against its checksums, every "
          "object against the layout, shapes and references as the extraction needs them. Nothing is written.")
      .describe("Of several files the worst gives the status: 1 before 5, then 4, then 3.")
      .exitStatus(0, "all files are sound")
      .exitStatus(1, "a file is damaged, takes more than the limits to read, or is not a database")
      .exitStatus(2, "wrong usage")
      .exitStatus(3, "a file has no checksums; nothing else is wrong with it")
      .exitStatus(4, "a file has layout 1 and can be read; it has no checksums")
      .exitStatus(5, "a file does not exist or cannot be opened")
      .example("kolvex verify job.odb")
      .example("kolvex verify --quiet results/*.odb || echo \"see above\"")
      .seeAlso("kolvex-import(1)")
      .seeAlso("kolvex-quarnish(1)")
      .arguments("FILE", options.files, "a database; several are checked one after the other")
      .flag("-q,--quiet", options.isQuiet, "print faults only");
  return command;
}

}  // namespace verify
