// Parses the arguments of a command: passes its table of options to CLI11.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <optional>

#include "tool/command.h"

namespace tool {

namespace {

// Turns what CLI11 throws into an error of ours.
std::function<void(const std::string&)> guarded(const Option& option) {
  return [take = option.take, names = option.names](const std::string& value) {
    try {
      take(value);
    } catch (const UsageError& error) {
      throw CLI::ValidationError(names.substr(names.rfind(',') + 1), error.what());
    }
  };
}

CLI::Option* addTo(CLI::App& app, const Option& option) {
  const auto take = guarded(option);
  if (option.value.empty() && !option.isArgument) {
    return app.add_flag_callback(option.names, [take] { take(""); });
  }
  const std::function<void(const std::vector<std::string>&)> takeAll = [take](const std::vector<std::string>& values) {
    for (const std::string& value : values) take(value);
  };
  CLI::Option* const added = app.add_option_function(option.names, takeAll);
  added->allow_extra_args(option.isArgument && option.isRepeated);
  if (!option.isRepeated) added->expected(1);
  if (option.isArgument && option.isRepeated) added->expected(1, 1 << 28);
  added->required(option.isRequired);
  return added;
}

}  // namespace

Outcome Command::parse(std::vector<std::string> arguments) const {
  if (!arguments.empty() && arguments.front() == "--complete") {
    const std::optional<CompletionRequest> request = completionRequestFrom({arguments.begin() + 1, arguments.end()});
    return {true, 0, textOf(request ? complete(*request) : Completion{})};
  }
  if (arguments == std::vector<std::string>{"--man"}) return {true, 0, manPage()};
  CLI::App app("", name_);
  app.set_help_flag(fmt::format("{}", fmt::join(helpNames(), ",")));
  app.set_version_flag("--version", name_ + " " + KOLVEX_VERSION);
  std::map<std::string, CLI::Option*> byName;
  for (const Option& option : options_) {
    CLI::Option* const added = addTo(app, option);
    for (const std::string& name : option.allNames()) byName[name] = added;
  }
  for (const auto& [one, other] : exclusive_) byName.at(one)->excludes(byName.at(other));
  try {
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    return {true, 0, help()};
  } catch (const CLI::CallForVersion& version) {
    return {true, 0, std::string(version.what()) + "\n"};
  } catch (const CLI::ParseError& error) {
    return refuse(error.what());
  }
  return {};
}

}  // namespace tool
