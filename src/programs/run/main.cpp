// `kolvex run`: reads the arguments, runs, says what came of it.

#include <string>
#include <utility>
#include <vector>

#include "run_job.h"
#include "tool/program.h"

namespace {

int run(std::vector<std::string> arguments) {
  single_run::RunOptions options;
  const tool::Command command = single_run::runCommand(options);
  const tool::Outcome outcome = command.parse(std::move(arguments));
  if (outcome.isDone) return outcome.finish();
  if (options.configuration.empty()) return command.refuse("--config is missing").finish();
  return single_run::runJob(options);
}

}  // namespace

int main(int argc, char** argv) { return tool::runProgram(argc, argv, run); }
