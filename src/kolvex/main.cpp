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

int runSubcommand(const char* name, char** arguments) {
  std::error_code failure;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", failure);
  if (failure) {
    fmt::print(stderr, "kolvex: cannot find out where it is installed: {}\n", failure.message());
    return kCannotRun;
  }
  const std::optional<std::string> program = kolvex::programPath(self.string(), name);
  if (!program) {
    fmt::print(stderr, "kolvex: the program of '{}' is not installed with {}\n", name, self.string());
    return kNotFound;
  }
  std::string path = *program;
  arguments[0] = path.data();
  ::execv(path.c_str(), arguments);
  fmt::print(stderr, "kolvex: {} cannot be run: {}\n", path, std::strerror(errno));
  return kCannotRun;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "{}", kolvex::helpText());
    return kUsageError;
  }
  const std::string_view command = argv[1];
  if (command == "--help" || command == "-h") {
    fmt::print("{}", kolvex::helpText());
    return 0;
  }
  if (command == "--version") {
    fmt::print("kolvex {}\n", KOLVEX_VERSION);
    return 0;
  }
  if (!kolvex::findSubcommand(command)) {
    fmt::print(stderr, "kolvex: '{}' is not a kolvex command. See 'kolvex --help'.\n", command);
    return 1;
  }
  return runSubcommand(argv[1], argv + 1);
}
