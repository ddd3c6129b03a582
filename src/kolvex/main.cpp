// `kolvex <command> ...` runs the program of that command with all arguments as they are.

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/control_characters.h"
#include "kolvex/pages.h"
#include "kolvex/subcommands.h"

namespace {

// What a shell returns for a command that cannot be run, and for one that is not there.
constexpr int kCannotRun = 126;
constexpr int kNotFound = 127;
constexpr int kUsageError = 2;

// All arguments behind its name are its own, so what shells ask about it another program answers.
constexpr std::string_view kExtraction = "quarnish";
constexpr const char* kExtractionCompletion = "quarnish-completion";

// Writes a text; 1 where the stream does not take it, which is no reason to fall over.
int say(std::FILE* stream, const std::string& text) {
  return std::fputs(text.c_str(), stream) >= 0 && std::fflush(stream) == 0 ? 0 : 1;
}

int sayVersion(const std::string& name) { return say(stdout, fmt::format("{} {}\n", name, KOLVEX_VERSION)); }

// `arguments` stand behind the place of the program's name and end with a null. A program of several commands is told
// by that name which one is meant.
int runSubcommand(const std::string& name, char** arguments) {
  std::error_code failure;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", failure);
  if (failure) {
    say(stderr, fmt::format("kolvex: cannot find out where it is installed: {}\n", failure.message()));
    return kCannotRun;
  }
  const std::optional<kolvex::Subcommand> known = kolvex::findSubcommand(name);
  const std::optional<std::string> program =
      kolvex::programPath(self.string(), known ? known->program : std::string_view(name));
  if (!program) {
    say(stderr, fmt::format("kolvex: the program of '{}' is not installed with {}\n", name, self.string()));
    return kNotFound;
  }
  std::string called = known && known->program != name ? name : *program;
  arguments[0] = called.data();
  ::execv(program->c_str(), arguments);
  say(stderr, fmt::format("kolvex: {} cannot be run: {}\n", *program, std::strerror(errno)));
  return kCannotRun;
}

int runSubcommand(const std::string& name, std::vector<std::string> arguments) {
  std::vector<char*> pointers = {nullptr};
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  return runSubcommand(name, pointers.data());
}

int unknown(std::string_view command) {
  say(stderr, fmt::format("kolvex: '{}' is not a kolvex command. See 'kolvex --help'.\n", base::escaped(command)));
  return 1;
}

// `kolvex --man [COMMAND [COMMAND-OF-IT]]`. The extraction's is here, for whatever is behind its name is its own.
int sayManPage(const std::vector<std::string>& arguments) {
  if (arguments.empty()) return say(stdout, kolvex::launcherCommand().manPage());
  if (!kolvex::findSubcommand(arguments.front())) return unknown(arguments.front());
  if (arguments.front() == kExtraction) return say(stdout, kolvex::extractionCommand().manPage());
  std::vector<std::string> forwarded(arguments.begin() + 1, arguments.end());
  forwarded.emplace_back("--man");
  return runSubcommand(arguments.front(), std::move(forwarded));
}

// `kolvex --complete INDEX WORD...`: behind a command its program knows what there is.
int sayCompletion(const std::vector<std::string>& arguments) {
  const std::optional<tool::CompletionRequest> request = tool::completionRequestFrom(arguments);
  if (!request) return kUsageError;
  if (request->at == 0) return say(stdout, tool::textOf(kolvex::launcherCommand().complete(*request)));
  const std::string& command = request->words.front();
  if (!kolvex::findSubcommand(command)) return say(stdout, tool::textOf({}));
  std::vector<std::string> forwarded = {std::to_string(request->at - 1)};
  forwarded.insert(forwarded.end(), request->words.begin() + 1, request->words.end());
  if (command == kExtraction) return runSubcommand(kExtractionCompletion, std::move(forwarded));
  forwarded.insert(forwarded.begin(), "--complete");
  return runSubcommand(command, std::move(forwarded));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    say(stderr, kolvex::launcherCommand().help());
    return kUsageError;
  }
  const std::string_view command = argv[1];
  if (command == "--help" || command == "-h") return say(stdout, kolvex::launcherCommand().help());
  if (command == "--version") return sayVersion("kolvex");
  if (command == "--man") return sayManPage({argv + 2, argv + argc});
  if (command == "--complete") return sayCompletion({argv + 2, argv + argc});
  if (!kolvex::findSubcommand(command)) return unknown(command);
  if (command == kExtraction && argc == 3) {
    const std::string_view only = argv[2];
    if (only == "--help") return say(stdout, kolvex::extractionCommand().help());
    if (only == "--version") return sayVersion("kolvex quarnish");
  }
  return runSubcommand(argv[1], argv + 1);
}
