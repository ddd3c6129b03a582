// Answers the shell for `kolvex quarnish`: that program has the arguments after its name to itself, and the launcher
// reads no databases.

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "driver/command_line.h"
#include "kolvex/pages.h"
#include "odbstore/reader.h"
#include "process/prepare_process.h"
#include "tool/command.h"
#include "tool/completion.h"

namespace {

// The value of `option` among the words; empty if it is not there. Of several the last counts.
std::string valueOf(const std::string& option, const std::vector<std::string>& words) {
  std::string value;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    if (words[i] == option) value = words[i + 1];
  }
  return value;
}

// The element sets of the assembly in the database on the line; none where it cannot be read, or is of an older layout.
std::vector<std::string> setsOnLine(const std::string&, const std::vector<std::string>& words) {
  const std::string database = valueOf("-odb", words);
  if (database.empty()) return {};
  tool::endAfterPatience();
  try {
    const auto reader = odbstore::Reader::openIfNewest(completedDatabaseName(database.c_str()).cStr());
    if (!reader) return {};
    return reader->sets({odbstore::OwnerKind::assembly, ""}, odbstore::SetKind::element);
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

// Arguments are those after the launcher's `--complete`.
int main(int argc, char** argv) {
  prepareProcess();
  const std::optional<tool::CompletionRequest> request = tool::completionRequestFrom({argv + 1, argv + argc});
  if (!request) return tool::kWrongUsage;
  const tool::Command command = kolvex::extractionCommand().completeBy(setsOnLine);
  return tool::Outcome{true, 0, tool::textOf(command.complete(*request))}.finish();
}
