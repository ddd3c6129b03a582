#include "tool/command.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <sstream>

#include "base/control_characters.h"

namespace tool {

namespace {

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

}  // namespace

std::vector<std::string> Option::allNames() const {
  std::vector<std::string> all;
  std::istringstream list(names);
  for (std::string name; std::getline(list, name, ',');) all.push_back(name);
  return all;
}

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

Command& Command::seeAlso(std::string page) {
  seeAlso_.push_back(std::move(page));
  return *this;
}

Command& Command::onlyLongHelp() {
  hasShortHelp_ = false;
  return *this;
}

std::vector<std::string> Command::helpNames() const {
  if (hasShortHelp_) return {"-h", "--help"};
  return {"--help"};
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
  optionalArguments(std::move(name), to, std::move(help), completes);
  options_.back().isRequired = true;
  return *this;
}

Command& Command::optionalArguments(std::string name, std::vector<std::string>& to, std::string help,
                                    Completes completes) {
  Option& option = add(name, name, std::move(help), completes, [&to](const std::string& text) { to.push_back(text); });
  option.isArgument = option.isRepeated = true;
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

Command& Command::subcommand(std::string name, std::string summary) {
  subcommands_.emplace_back(std::move(name), std::move(summary));
  return *this;
}

Command& Command::completeBy(
    std::function<std::vector<std::string>(const std::string&, const std::vector<std::string>&)> computed) {
  computed_ = std::move(computed);
  return *this;
}

Outcome Command::refuse(const std::string& reason) const {
  return {true, kWrongUsage, name_ + ": " + base::escaped(reason) + "\nRun `" + name_ + " --help` for its options.\n"};
}

}  // namespace tool
