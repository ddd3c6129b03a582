#include "kolvex/subcommands.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace kolvex {

namespace {

constexpr std::array kSubcommands = {
    Subcommand{"batch", "extract from many databases or results"},
    Subcommand{"export", "write a database for viewers of pictures"},
    Subcommand{"import", "bring the results of a solver into an output database"},
    Subcommand{"quarnish", "extract named scalars from an output database"},
    Subcommand{"verify", "check an output database for damage"},
};

}  // namespace

std::span<const Subcommand> subcommands() { return kSubcommands; }

std::optional<Subcommand> findSubcommand(std::string_view name) {
  const auto found = std::find_if(kSubcommands.begin(), kSubcommands.end(),
                                  [&](const Subcommand& subcommand) { return subcommand.name == name; });
  if (found == kSubcommands.end()) return std::nullopt;
  return *found;
}

std::optional<std::string> programPath(const std::string& launcher, std::string_view name) {
  const std::filesystem::path beside = std::filesystem::path(launcher).parent_path();
  const std::filesystem::path installed = (beside / KOLVEX_PROGRAMS).lexically_normal();
  std::error_code ignored;
  const bool isInstalled = std::filesystem::is_directory(installed, ignored);
  const std::filesystem::path program = (isInstalled ? installed : beside) / name;
  if (!std::filesystem::is_regular_file(program, ignored)) return std::nullopt;
  return program.string();
}

}  // namespace kolvex
