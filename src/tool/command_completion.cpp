// What a shell offers to complete a command.
#include <algorithm>

#include "tool/command.h"

namespace tool {

namespace {

using Words = std::vector<std::string>;

// The option of that name, if it has a value; null if there is none.
const Option* optionWithValue(const std::vector<Option>& options, const std::string& name) {
  for (const Option& option : options) {
    if (option.isArgument || option.value.empty()) continue;
    const Words names = option.allNames();
    if (std::find(names.begin(), names.end(), name) != names.end()) return &option;
  }
  return nullptr;
}

// What the words before the one being typed make of it.
struct Before {
  std::size_t arguments = 0;       // already given
  const Option* option = nullptr;  // whose value it is
  bool areOptionsPossible = true;  // no "--" before
};

Before read(const std::vector<Option>& options, const CompletionRequest& request) {
  Before before;
  for (std::size_t i = 0; i < request.at; ++i) {
    const std::string& word = request.words[i];
    if (before.option != nullptr) {
      before.option = nullptr;
    } else if (!before.areOptionsPossible || !word.starts_with('-') || word == "-") {
      ++before.arguments;
    } else if (word == "--") {
      before.areOptionsPossible = false;
    } else {
      before.option = optionWithValue(options, word);
    }
  }
  return before;
}

// The argument after `count` others; null if there are no more.
const Option* argumentBehind(const std::vector<Option>& options, std::size_t count) {
  for (const Option& option : options) {
    if (!option.isArgument) continue;
    if (count == 0 || option.isRepeated) return &option;
    --count;
  }
  return nullptr;
}

Words beginningWith(const std::string& start, Words words) {
  std::erase_if(words, [&](const std::string& word) { return !word.starts_with(start); });
  return words;
}

Words optionNames(const std::vector<Option>& options, const Words& helpNames) {
  Words names;
  for (const Option& option : options) {
    if (option.isArgument) continue;
    for (const std::string& name : option.allNames()) names.push_back(name);
  }
  names.insert(names.end(), helpNames.begin(), helpNames.end());
  names.emplace_back("--version");
  return names;
}

// The other words of the line: all but the one being typed and the `names` before it, which it is the value of.
Words others(const CompletionRequest& request, std::size_t names) {
  Words words = request.words;
  const auto first = words.begin() + static_cast<std::ptrdiff_t>(request.at - names);
  words.erase(first, request.at < words.size() ? first + static_cast<std::ptrdiff_t>(names) + 1 : words.end());
  return words;
}

}  // namespace

Completion Command::completeValue(const Option& option, const std::string& start, const Words& others) const {
  switch (option.completes) {
    case Completes::file:
    case Completes::directory:
      return {{}, option.completes};
    case Completes::words:
      return {beginningWith(start, option.words), Completes::nothing};
    case Completes::computed:
      if (computed_) return {beginningWith(start, computed_(option.allNames().back(), others)), Completes::nothing};
      break;
    case Completes::nothing:
      break;
  }
  return {};
}

Completion Command::complete(const CompletionRequest& request) const {
  const std::string start = request.start();
  const Before before = read(options_, request);
  if (before.option != nullptr) return completeValue(*before.option, start, others(request, 1));
  if (before.areOptionsPossible && start.starts_with('-')) {
    const std::size_t equals = start.find('=');
    if (equals == std::string::npos)
      return {beginningWith(start, optionNames(options_, helpNames())), Completes::nothing};
    const Option* const option = optionWithValue(options_, start.substr(0, equals));
    return option == nullptr ? Completion{} : completeValue(*option, start.substr(equals + 1), others(request, 0));
  }
  if (before.arguments == 0 && !subcommands_.empty()) {
    Words names;
    for (const auto& [name, summary] : subcommands_) names.push_back(name);
    names = beginningWith(start, std::move(names));
    // It may be an argument as well: anything that no command begins with.
    if (!names.empty() || argumentBehind(options_, 0) == nullptr) return {names, Completes::nothing};
  }
  const Option* const argument = argumentBehind(options_, before.arguments);
  return argument == nullptr ? Completion{} : completeValue(*argument, start, others(request, 0));
}

}  // namespace tool
