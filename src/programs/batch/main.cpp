// `kolvex batch`: which of its commands is meant.

#include <optional>
#include <string>
#include <vector>

#include "batch/run/input_list.h"
#include "collect_table.h"
#include "run_batch.h"
#include "show_result.h"
#include "show_status.h"
#include "tool/completion.h"
#include "tool/program.h"

namespace {

using Arguments = std::vector<std::string>;

int runInputs(Arguments arguments) {
  batch::RunOptions options;
  options.slurmOptions = batch::takeSlurmOptions(arguments);
  const tool::Command command = batch::runCommand(options);
  const tool::Outcome outcome = command.parse(arguments);
  if (outcome.isDone) return outcome.finish();
  const std::string refusal = batch::refusalOf(options);
  if (!refusal.empty()) return command.refuse(refusal).finish();
  try {
    return batch::runBatch(options);
  } catch (const batch::InputListError& error) {
    return command.refuse(error.what()).finish();
  }
}

int collect(const Arguments& arguments) {
  batch::CollectOptions options;
  const tool::Command command = batch::collectCommand(options);
  const tool::Outcome outcome = command.parse(arguments);
  if (outcome.isDone) return outcome.finish();
  if (options.form == "sqlite" && options.output.empty()) {
    return command.refuse("--to sqlite needs -o FILE").finish();
  }
  batch::collectTable(options);
  return 0;
}

int status(const Arguments& arguments) {
  batch::StatusOptions options;
  const tool::Outcome outcome = batch::statusCommand(options).parse(arguments);
  return outcome.isDone ? outcome.finish() : batch::showStatus(options);
}

int show(const Arguments& arguments) {
  batch::ShowOptions options;
  const tool::Outcome outcome = batch::showCommand(options).parse(arguments);
  if (outcome.isDone) return outcome.finish();
  batch::showResult(options);
  return 0;
}

// `--complete INDEX batch-command WORD...`, with the command's name taken out.
Arguments completionWithout(const Arguments& arguments) {
  const std::optional<tool::CompletionRequest> request =
      tool::completionRequestFrom({arguments.begin() + 1, arguments.end()});
  if (!request || request->at == 0) return {};
  Arguments forwarded = {"--complete", std::to_string(request->at - 1)};
  forwarded.insert(forwarded.end(), request->words.begin() + 1, request->words.end());
  return forwarded;
}

int run(const Arguments& arguments) {
  const auto wordAt = [&](std::size_t place) { return place < arguments.size() ? arguments[place] : ""; };
  const bool isCompletion = wordAt(0) == "--complete";
  const std::string command = wordAt(isCompletion ? 2 : 0);
  if (command != "collect" && command != "show" && command != "status") return runInputs(arguments);
  const Arguments own = isCompletion ? completionWithout(arguments) : Arguments(arguments.begin() + 1, arguments.end());
  if (isCompletion && own.empty()) return runInputs(arguments);
  if (command == "show") return show(own);
  return command == "collect" ? collect(own) : status(own);
}

}  // namespace

int main(int argc, char** argv) { return tool::runProgram(argc, argv, run); }
