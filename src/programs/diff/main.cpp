// `kolvex diff`: reads the arguments, compares, says what differs.

#include <string>
#include <utility>
#include <vector>

#include "diff_records.h"
#include "tool/program.h"

namespace {

int run(std::vector<std::string> arguments) {
  inspect::DiffOptions options;
  const tool::Command command = inspect::diffCommand(options);
  const tool::Outcome outcome = command.parse(std::move(arguments));
  if (outcome.isDone) return outcome.finish();
  if (options.databases.size() > 2) return command.refuse("--odb is given twice at most").finish();
  return inspect::diffRecords(options);
}

}  // namespace

int main(int argc, char** argv) { return tool::runProgram(argc, argv, run, inspect::kTrouble); }
