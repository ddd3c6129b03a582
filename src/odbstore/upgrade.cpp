#include "odbstore/upgrade.h"

#include <fmt/format.h>

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

// The copy would take the place of what it is made from.
void requireOtherFile(const std::string& oldPath, const std::string& newPath) {
  std::error_code ignored;
  if (!std::filesystem::equivalent(oldPath, newPath, ignored)) return;
  throw StoreError(
      oldPath, "",
      fmt::format("is of an older layout, and its upgraded copy {} would replace it: give it another name", newPath));
}

// What goes wrong with the copy is said of the database, for that is the file whose name the user has given.
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
    // Whatever is wrong with a file that nobody will see, its user learns the same of it.
  }
  throw StoreError(file.finalPath(), "", "cannot be read back as it was written");
}

std::shared_ptr<const Reader> upgrade(const std::string& oldPath, const std::string& newPath) {
  const OpenedFile old = openForReading(oldPath, oldPath);
  requireOtherFile(oldPath, newPath);
  return saidOf(oldPath, newPath, [&] {
    // The other program writes, and this one gives the name: what crashes after its work has left nothing under it, and
    // waiting for a slow disk counts as nobody's time.
    base::OutputFile file(newPath);
    base::runLimited(oldPath, {scanProgramPath(), {"upgrade", file.temporaryPath(), newPath}, old.file.get()},
                     base::limitsFor(old.start.bytes));
    // A program that went astray may have left anything.
    std::shared_ptr<const Reader> written = requireComplete(file);
    file.publish();
    return written;
  });
}

}  // namespace odbstore
