// The command line of a program, defined once: parsing, `--help`, the man page and completion in the shell all use it.
//
//     bool isList = false;
//     std::string output;
//     tool::Command command("kolvex import", "bring results into a database");
//     command.argument("JOB", input, "the result file", tool::Completes::file)
//         .option("-o,--output", "DATABASE", output, "the database to write", tool::Completes::file)
//         .flag("--list", isList, "show what would be imported");
//     const tool::Outcome outcome = command.parse({argv + 1, argv + argc});
//     if (outcome.isDone) return outcome.finish();
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tool/completion.h"

namespace tool {

// Exit statuses that all commands share.
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

struct Option {
  std::string names;  // "-o,--output"; that of an argument without dashes
  std::string value;  // the name of its value, empty for a flag
  std::string help;
  std::string group;  // heading in the help, empty for those of the command itself
  Completes completes = Completes::nothing;
  std::vector<std::string> words;  // that may be given
  bool isArgument = false;
  bool isRequired = false;
  bool isRepeated = false;
  // Receives a value, "" for a flag. Throws UsageError if it is not understood.
  std::function<void(const std::string&)> take;

  // "-o" and "--output".
  std::vector<std::string> allNames() const;
};

// A value that is not understood; the text says what is expected.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What to do after a command line has been parsed.
struct Outcome {
  bool isDone = false;  // print `text` and exit with `status`
  int status = 0;
  std::string text;

  // Prints the text, on standard error when the status is not 0, and returns the status.
  int finish() const;
};

class Command {
 public:
  // `name` as users type it, "kolvex import"; `summary` is a few words without a full stop.
  Command(std::string name, std::string summary) : name_(std::move(name)), summary_(std::move(summary)) {}

  // What follows the name in the synopsis; may be called again for another form.
  Command& synopsis(std::string text);
  // A paragraph of the description; one that starts with blanks is not re-wrapped.
  Command& describe(std::string paragraph);
  Command& exitStatus(int status, std::string meaning);
  Command& example(std::string line);
  // A related page, "kolvex-verify(1)".
  Command& seeAlso(std::string page);
  // `-h` does not mean `--help`.
  Command& onlyLongHelp();
  // A program that this one starts with the arguments after its name.
  Command& subcommand(std::string name, std::string summary);

  // A heading for the options that follow.
  Command& group(std::string title);
  Command& flag(std::string names, bool& to, std::string help);
  Command& flag(std::string names, std::function<void()> take, std::string help);
  Command& option(std::string names, std::string value, std::string& to, std::string help,
                  Completes completes = Completes::nothing);
  Command& option(std::string names, std::string value, std::function<void(const std::string&)> take, std::string help,
                  Completes completes = Completes::nothing);
  // One of `words`.
  Command& choice(std::string names, std::string value, std::vector<std::string> words,
                  std::function<void(const std::string&)> take, std::string help);
  // A whole number from `least` to `greatest`.
  Command& number(std::string names, std::string value, std::size_t& to, std::size_t least, std::size_t greatest,
                  std::string help);
  // The next argument without dashes; the last one may be repeated.
  Command& argument(std::string name, std::string& to, std::string help, Completes completes = Completes::file);
  Command& optionalArgument(std::string name, std::string& to, std::string help, Completes completes = Completes::file);
  Command& arguments(std::string name, std::vector<std::string>& to, std::string help,
                     Completes completes = Completes::file);
  Command& optionalArguments(std::string name, std::vector<std::string>& to, std::string help,
                             Completes completes = Completes::file);
  // The option added last may be given again.
  Command& repeated();
  // Options that cannot be given together, by one of their names.
  Command& exclusive(std::string one, std::string other);
  // For options with computed candidates: called with the last name of the option and the other words of the line,
  // without the option and the value being typed; returns all candidates for the value.
  Command& completeBy(
      std::function<std::vector<std::string>(const std::string& option, const std::vector<std::string>& words)>
          computed);

  // Parses the arguments, without the program's name. Touches no file, except to compute completions. `--help`,
  // `--version`, `--man` (the page for the man command) and `--complete` (completion.h) are answered; wrong usage has
  // the status 2.
  Outcome parse(std::vector<std::string> arguments) const;

  // Wrong usage that parsing cannot see.
  Outcome refuse(const std::string& reason) const;

  std::string help() const;
  // In the language of man(7).
  std::string manPage() const;
  Completion complete(const CompletionRequest& request) const;

  const std::string& name() const { return name_; }
  const std::string& summary() const { return summary_; }
  const std::vector<Option>& options() const { return options_; }

 private:
  Option& add(std::string names, std::string value, std::string help, Completes completes,
              std::function<void(const std::string&)> take);
  Completion completeValue(const Option& option, const std::string& start,
                           const std::vector<std::string>& others) const;
  std::string synopsisText() const;
  // Those that answer `--help`.
  std::vector<std::string> helpNames() const;

  std::string name_;
  std::string summary_;
  std::vector<std::string> synopses_;
  std::vector<std::string> description_;
  std::vector<std::pair<int, std::string>> exitStatuses_;
  std::vector<std::string> examples_;
  std::vector<std::string> seeAlso_;
  std::vector<std::pair<std::string, std::string>> subcommands_;
  bool hasShortHelp_ = true;
  std::string group_;
  std::vector<Option> options_;
  std::vector<std::pair<std::string, std::string>> exclusive_;
  std::function<std::vector<std::string>(const std::string&, const std::vector<std::string>&)> computed_;
};

}  // namespace tool
