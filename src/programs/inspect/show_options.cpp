#include "show_options.h"

namespace inspect {

tool::Command showCommand(ShowOptions& options) {
  tool::Command command("kolvex show", "show what is in an output database");
  command.argument("DATABASE", options.database, "the database; .odb may be left out")
      .option("--records", "CONFIG", options.records,
              "print the names of the records that a run with this configuration would write", tool::Completes::file)
      .flag("--json", options.isJson, "print JSON");
  return command;
}

}  // namespace inspect
