#include "kolvex/subcommands.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace kolvex {

namespace {

constexpr std::array kSubcommands = {
    Subcommand{"batch", "extract from many databases or results", "batch"},
    Subcommand{"check", "check a configuration before a run", "inspect"},
    Subcommand{"diff", "compare the records of two runs", "diff"},
    Subcommand{"export", "write a database for viewers of pictures", "export"},
    Subcommand{"import", "bring the results of a solver into an output database", "import"},
    Subcommand{"locate", "say where and when the extremes of records are", "locate"},
    Subcommand{"params", "turn the records of a run into a table", "inspect"},
    Subcommand{"quarnish", "extract named scalars from an output database", "quarnish"},
    Subcommand{"report", "show a database in one page for the browser", "report"},
    Subcommand{"run", "import results and extract from them", "run"},
    Subcommand{"show", "show what is in an output database", "inspect"},
    Subcommand{"verify", "check an output database for damage", "verify"},
};

}  // namespace

std::span<const Subcommand> subcommands() { return kSubcommands; }

std::optional<Subcommand> findSubcommand(std::string_view name) {
  const auto found = std::find_if(kSubcommands.begin(), kSubcommands.end(),
                                  [&](const Subcommand& subcommand) { return subcommand.name == name; });
  if (found == kSubcommands.end()) return std::nullopt;
  return *found;
}

std::optional<std::string> programPath(const std::string& launcher, std::string_view program) {
  const std::filesystem::path beside = std::filesystem::path(launcher).parent_path();
  const std::filesystem::path installed = (beside / KOLVEX_PROGRAMS).lexically_normal();
  std::error_code ignored;
  const bool isInstalled = std::filesystem::is_directory(installed, ignored);
  const std::filesystem::path path = (isInstalled ? installed : beside) / program;
  if (!std::filesystem::is_regular_file(path, ignored)) return std::nullopt;
  return path.string();
}

}  // namespace kolvex
