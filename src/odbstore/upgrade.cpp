#include "odbstore/upgrade.h"

#include <fmt/core.h>

#include <filesystem>
#include <system_error>

#include "base/limited_program.h"
#include "base/output_file.h"
#include "odbstore/database_file.h"
#include "odbstore/preflight.h"
#include "odbstore/reader.h"
#include "odbstore/scan_program.h"
#include "odbstore/sum_check.h"

namespace odbstore {

namespace {

// The copy would replace its source.
void requireOtherFile(const std::string& oldPath, const std::string& newPath) {
  std::error_code ignored;
  if (!std::filesystem::equivalent(oldPath, newPath, ignored)) return;
  throw StoreError(
      oldPath, "",
      fmt::format("has an older layout, and the upgraded copy {} would replace it: choose another name", newPath));
}

// Errors in the copy name the database, because that is the file that the user has given.
template <class Action>
auto saidOf(const std::string& oldPath, const std::string& newPath, Action&& action) {
  try {
    return action();
  } catch (const StoreError& error) {
    if (error.file() != newPath) throw;
    throw StoreError(oldPath, "", fmt::format("cannot be upgraded into {}", error.what()));
  }
}

}  // namespace

std::shared_ptr<const Reader> requireComplete(const base::OutputFile& file) {
  try {
    std::shared_ptr<const DatabaseFile> written = DatabaseFile::open(file.temporaryPath(), file.finalPath());
    bool isWhole = written && written->isCatalogued();
    if (isWhole) compareSums(*written, [&](const DamagedPiece&) { isWhole = false; });
    if (isWhole) return std::make_shared<const Reader>(std::move(written));
  } catch (const StoreError&) {
    // Nobody will see this file, so the reason does not matter to the user.
  }
  throw StoreError(file.finalPath(), "", "cannot be read back as it was written");
}

std::shared_ptr<const Reader> upgrade(const std::string& oldPath, const std::string& newPath) {
  const OpenedFile old = openForReading(oldPath, oldPath);
  requireOtherFile(oldPath, newPath);
  return saidOf(oldPath, newPath, [&] {
    // The other program writes and this one gives the final name: a crash leaves nothing under that name, and waiting
    // for a slow disk does not count against the limit.
    base::OutputFile file(newPath);
    base::runLimited(oldPath, {scanProgramPath(), {"upgrade", file.temporaryPath(), newPath}, old.file.get()},
                     base::limitsFor(old.start.bytes));
    // A program that misbehaved may have written anything.
    std::shared_ptr<const Reader> written = requireComplete(file);
    file.publish();
    return written;
  });
}

}  // namespace odbstore
