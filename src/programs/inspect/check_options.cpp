#include "check_options.h"

namespace inspect {

tool::Command checkCommand(CheckOptions& options) {
  tool::Command command("kolvex check", "check a configuration before a run");
  command.synopsis("CONFIG [DATABASE] [--json]")
      .describe(
          "Reads a configuration as `kolvex quarnish` does and says what its user may not expect: words that look like "
          "keywords but are not, with the nearest keyword; keywords that count although they are in a longer word or "
          "in "
          "what looks like a comment; keywords without effect.")
      .describe(
          "With a database it also says which fields are taken, which are not and why, how many records a run "
          "writes, and which names occur twice among them. No results are read.")
      .exitStatus(0, "there is nothing to remark")
      .exitStatus(1, "the configuration or the database cannot be read")
      .exitStatus(2, "wrong usage")
      .exitStatus(kHasRemarks, "there are remarks")
      .exitStatus(kTakesNothing, "a run would write no record, or ends before it writes any")
      .example("kolvex check extract.cfg")
      .example("kolvex check extract.cfg job.odb")
      .example("kolvex check extract.cfg job.odb --json")
      .seeAlso("kolvex-show(1)")
      .seeAlso("kolvex-quarnish(1)")
      .argument("CONFIG", options.configuration, "the configuration file")
      .optionalArgument("DATABASE", options.database, "a database that it is for; .odb may be left out")
      .flag("--json", options.isJson, "print JSON");
  return command;
}

}  // namespace inspect
