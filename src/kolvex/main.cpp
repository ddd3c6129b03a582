// `kolvex <command> ...` runs the program of that command with all arguments as they are.

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "kolvex/subcommands.h"

namespace {

// What a shell returns for a command that cannot be run, and for one that is not there.
constexpr int kCannotRun = 126;
constexpr int kNotFound = 127;
constexpr int kUsageError = 2;

// Writes a text; 1 where the stream does not take it, which is no reason to fall over.
int say(std::FILE* stream, const std::string& text) {
  return std::fputs(text.c_str(), stream) >= 0 && std::fflush(stream) == 0 ? 0 : 1;
}

int runSubcommand(const char* name, char** arguments) {
  std::error_code failure;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", failure);
  if (failure) {
    say(stderr, fmt::format("kolvex: cannot find out where it is installed: {}\n", failure.message()));
    return kCannotRun;
  }
  const std::optional<std::string> program = kolvex::programPath(self.string(), name);
  if (!program) {
    say(stderr, fmt::format("kolvex: the program of '{}' is not installed with {}\n", name, self.string()));
    return kNotFound;
  }
  std::string path = *program;
  arguments[0] = path.data();
  ::execv(path.c_str(), arguments);
  say(stderr, fmt::format("kolvex: {} cannot be run: {}\n", path, std::strerror(errno)));
  return kCannotRun;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    say(stderr, kolvex::helpText());
    return kUsageError;
  }
  const std::string_view command = argv[1];
  if (command == "--help" || command == "-h") {
    return say(stdout, kolvex::helpText());
  }
  if (command == "--version") {
    return say(stdout, fmt::format("kolvex {}\n", KOLVEX_VERSION));
  }
  if (!kolvex::findSubcommand(command)) {
    say(stderr, fmt::format("kolvex: '{}' is not a kolvex command. See 'kolvex --help'.\n", command));
    return 1;
  }
  return runSubcommand(argv[1], argv + 1);
}
