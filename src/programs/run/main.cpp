// `kolvex run`: reads the arguments, runs, says what came of it.

#include <exception>
#include <new>

#include "process/prepare_process.h"
#include "run_job.h"
#include "tool/console.h"

int main(int argc, char** argv) {
  prepareProcess();
  try {
    single_run::RunOptions options;
    const tool::Command command = single_run::runCommand(options);
    const tool::Outcome outcome = command.parse({argv + 1, argv + argc});
    if (outcome.isDone) return outcome.finish();
    if (options.configuration.empty()) return command.refuse("--config is missing").finish();
    return single_run::runJob(options);
  } catch (const std::bad_alloc&) {
    tool::complain("out of memory");
  } catch (const std::exception& error) {
    tool::complain(error.what());
  }
  return tool::kFailed;
}
