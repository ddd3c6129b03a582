// `kolvex show`, `check`, `params`: one program, which goes by the name that it is started under; under its own the
// command is the first argument.

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "check.h"
#include "params.h"
#include "show.h"
#include "tool/console.h"
#include "tool/program.h"

namespace {

using Arguments = std::vector<std::string>;

int check(const Arguments& arguments) {
  inspect::CheckOptions options;
  const tool::Outcome outcome = inspect::checkCommand(options).parse(arguments);
  return outcome.isDone ? outcome.finish() : inspect::check(options);
}

int params(const Arguments& arguments) {
  inspect::ParamsOptions options;
  const tool::Command command = inspect::paramsCommand(options);
  const tool::Outcome outcome = command.parse(arguments);
  if (outcome.isDone) return outcome.finish();
  const std::string refusal = inspect::refusalOf(options);
  return refusal.empty() ? inspect::params(options) : command.refuse(refusal).finish();
}

int show(const Arguments& arguments) {
  inspect::ShowOptions options;
  const tool::Command command = inspect::showCommand(options);
  const tool::Outcome outcome = command.parse(arguments);
  if (outcome.isDone) return outcome.finish();
  const std::string refusal = inspect::refusalOf(options);
  return refusal.empty() ? inspect::show(options) : command.refuse(refusal).finish();
}

const std::map<std::string, std::function<int(const Arguments&)>> kCommands = {
    {"check", check}, {"params", params}, {"show", show}};

int run(std::string name, Arguments arguments) {
  if (!kCommands.contains(name) && !arguments.empty()) {
    name = arguments.front();
    arguments.erase(arguments.begin());
  }
  const auto command = kCommands.find(name);
  if (command != kCommands.end()) return command->second(arguments);
  tool::complain("this program is started by kolvex: see 'kolvex --help'");
  return tool::kWrongUsage;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string name = std::filesystem::path(argv[0]).filename().string();
  return tool::runProgram(argc, argv, [&](Arguments arguments) { return run(name, std::move(arguments)); });
}
