// `kolvex batch`: which of its commands is meant.

#include <exception>
#include <new>
#include <string>
#include <vector>

#include "batch/run/input_list.h"
#include "process/prepare_process.h"
#include "run_batch.h"
#include "tool/console.h"

namespace {

int run(std::vector<std::string> arguments) {
  batch::RunOptions options;
  const tool::Command command = batch::runCommand(options);
  const tool::Outcome outcome = command.parse(std::move(arguments));
  if (outcome.isDone) return outcome.finish();
  const std::string refusal = batch::refusalOf(options);
  if (!refusal.empty()) return command.refuse(refusal).finish();
  try {
    return batch::runBatch(options);
  } catch (const batch::InputListError& error) {
    return command.refuse(error.what()).finish();
  }
}

}  // namespace

int main(int argc, char** argv) {
  prepareProcess();
  try {
    return run({argv + 1, argv + argc});
  } catch (const std::bad_alloc&) {
    tool::complain("out of memory");
  } catch (const std::exception& error) {
    tool::complain(error.what());
  }
  return tool::kFailed;
}
