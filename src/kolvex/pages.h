// Pages that the launcher prints itself: its own and that of the extraction, whose arguments it passes on unread.
#pragma once

#include "tool/command.h"

namespace kolvex {

// `kolvex`, with the subcommands of the table.
tool::Command launcherCommand();

// `kolvex quarnish`: what its page shows and shells complete. It is never parsed; the program reads its arguments in
// its own way.
tool::Command extractionCommand();

}  // namespace kolvex
