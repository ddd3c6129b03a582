// The subcommands of kolvex: which there are, and where their programs stand.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kolvex {

struct Subcommand {
  std::string_view name;
  std::string_view summary;  // one line for the help
  std::string_view program;  // several may share one, which goes by the name that it is started under
};

// All there are. Only these are ever run: `kolvex ls` must not find the system's own.
std::span<const Subcommand> subcommands();

// Nothing for a name that is not in the table.
std::optional<Subcommand> findSubcommand(std::string_view name);

// Where a program is installed with the launcher at `launcher` (an absolute path): in the directory
// that the build was configured for, as a rule ../libexec/kolvex as seen from the launcher's, or beside it where there
// is no such directory, as after a build. Nothing when it is not there; the directory of an installed launcher is not
// searched, since other programs called `import` live there.
std::optional<std::string> programPath(const std::string& launcher, std::string_view program);

}  // namespace kolvex
