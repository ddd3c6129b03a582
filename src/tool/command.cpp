#include "tool/command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>
#include <sstream>

namespace tool {

namespace {

const char* const kHelpNames = "-h,--help";

std::optional<std::size_t> wholeNumber(const std::string& text) {
  if (text.empty() || text.size() > 18 ||
      !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    return std::nullopt;
  }
  return std::stoull(text);
}

std::string quotedList(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ", ") + word;
  return list;
}

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

int Outcome::finish() const {
  std::FILE* const stream = status == 0 ? stdout : stderr;
  std::fputs(text.c_str(), stream);
  if (std::fflush(stream) != 0) return kFailed;
  return status;
}

Command& Command::synopsis(std::string text) {
  synopses_.push_back(std::move(text));
  return *this;
}

Command& Command::describe(std::string paragraph) {
  description_.push_back(std::move(paragraph));
  return *this;
}

Command& Command::exitStatus(int status, std::string meaning) {
  exitStatuses_.emplace_back(status, std::move(meaning));
  return *this;
}

Command& Command::example(std::string line) {
  examples_.push_back(std::move(line));
  return *this;
}

Command& Command::group(std::string title) {
  group_ = std::move(title);
  return *this;
}

Option& Command::add(std::string names, std::string value, std::string help, Completes completes,
                     std::function<void(const std::string&)> take) {
  options_.push_back({std::move(names),
                      std::move(value),
                      std::move(help),
                      group_,
                      completes,
                      {},
                      false,
                      false,
                      false,
                      std::move(take)});
  return options_.back();
}

Command& Command::flag(std::string names, bool& to, std::string help) {
  return flag(
      std::move(names), [&to] { to = true; }, std::move(help));
}

Command& Command::flag(std::string names, std::function<void()> take, std::string help) {
  add(std::move(names), "", std::move(help), Completes::nothing,
      [take = std::move(take)](const std::string&) { take(); });
  return *this;
}

Command& Command::option(std::string names, std::string value, std::string& to, std::string help, Completes completes) {
  return option(
      std::move(names), std::move(value), [&to](const std::string& text) { to = text; }, std::move(help), completes);
}

Command& Command::option(std::string names, std::string value, std::function<void(const std::string&)> take,
                         std::string help, Completes completes) {
  add(std::move(names), std::move(value), std::move(help), completes, std::move(take));
  return *this;
}

Command& Command::choice(std::string names, std::string value, std::vector<std::string> words,
                         std::function<void(const std::string&)> take, std::string help) {
  const auto takeKnown = [words, take = std::move(take)](const std::string& text) {
    if (std::find(words.begin(), words.end(), text) == words.end()) {
      throw UsageError("\"" + text + "\" is not one of " + quotedList(words));
    }
    take(text);
  };
  add(std::move(names), std::move(value), std::move(help), Completes::words, takeKnown).words = std::move(words);
  return *this;
}

Command& Command::number(std::string names, std::string value, std::size_t& to, std::size_t least, std::size_t greatest,
                         std::string help) {
  const auto take = [&to, least, greatest](const std::string& text) {
    const std::optional<std::size_t> number = wholeNumber(text);
    if (!number || *number < least || *number > greatest) {
      throw UsageError("\"" + text + "\" is not a whole number from " + std::to_string(least) + " to " +
                       std::to_string(greatest));
    }
    to = *number;
  };
  add(std::move(names), std::move(value), std::move(help), Completes::nothing, take);
  return *this;
}

Command& Command::argument(std::string name, std::string& to, std::string help, Completes completes) {
  optionalArgument(std::move(name), to, std::move(help), completes);
  options_.back().isRequired = true;
  return *this;
}

Command& Command::optionalArgument(std::string name, std::string& to, std::string help, Completes completes) {
  Option& option = add(name, name, std::move(help), completes, [&to](const std::string& text) { to = text; });
  option.isArgument = true;
  return *this;
}

Command& Command::arguments(std::string name, std::vector<std::string>& to, std::string help, Completes completes) {
  Option& option = add(name, name, std::move(help), completes, [&to](const std::string& text) { to.push_back(text); });
  option.isArgument = option.isRepeated = option.isRequired = true;
  return *this;
}

Command& Command::repeated() {
  options_.back().isRepeated = true;
  return *this;
}

Command& Command::exclusive(std::string one, std::string other) {
  exclusive_.emplace_back(std::move(one), std::move(other));
  return *this;
}

Command& Command::completeBy(
    std::function<std::vector<std::string>(const std::string&, const std::vector<std::string>&)> computed) {
  computed_ = std::move(computed);
  return *this;
}

Outcome Command::parse(std::vector<std::string> arguments) const {
  if (!arguments.empty() && arguments.front() == "--complete") {
    Outcome outcome{true, 0, ""};
    for (const std::string& candidate : complete({arguments.begin() + 1, arguments.end()})) {
      outcome.text += candidate + "\n";
    }
    return outcome;
  }
  if (arguments == std::vector<std::string>{"--man"}) return {true, 0, manPage()};
  CLI::App app("", name_);
  app.set_help_flag(kHelpNames);
  app.set_version_flag("--version", name_ + " " + KOLVEX_VERSION);
  std::map<std::string, CLI::Option*> byName;
  for (const Option& option : options_) {
    CLI::Option* const added = addTo(app, option);
    std::istringstream names(option.names);
    for (std::string name; std::getline(names, name, ',');) byName[name] = added;
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

Outcome Command::refuse(const std::string& reason) const {
  return {true, kWrongUsage, name_ + ": " + reason + "\nRun `" + name_ + " --help` for its options.\n"};
}

}  // namespace tool
