// `kolvex locate`: reads the arguments, locates, says where.

#include <string>
#include <utility>
#include <vector>

#include "locate_records.h"
#include "tool/program.h"

namespace {

int run(std::vector<std::string> arguments) {
  inspect::LocateOptions options;
  const tool::Command command = inspect::locateCommand(options);
  const tool::Outcome outcome = command.parse(std::move(arguments));
  if (outcome.isDone) return outcome.finish();
  if (options.names.empty() && options.params.empty()) return command.refuse("no record is named").finish();
  return inspect::locateRecords(options);
}

}  // namespace

int main(int argc, char** argv) { return tool::runProgram(argc, argv, run); }
