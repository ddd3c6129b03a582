#include "odbstore/upgrade.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/limited_child.h"
#include "base/output_file.h"
#include "odbstore/checksums.h"
#include "odbstore/layout_1.h"
#include "odbstore/open_database.h"
#include "odbstore/preflight.h"
#include "odbstore/reader.h"
#include "odbstore/writer.h"

namespace odbstore {

namespace {

void writeUpgraded(const std::string& oldPath, const base::OutputFile& file) {
  Writer writer(file);
  copyLayout1(oldPath, writer);
  writer.finish();
}

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
    const std::string_view text = error.what();
    if (!text.starts_with(newPath + ": ")) throw;
    throw StoreError(oldPath, "", fmt::format("cannot be upgraded into {}", text));
  }
}

}  // namespace

std::shared_ptr<const Reader> requireComplete(const base::OutputFile& file) {
  try {
    std::shared_ptr<const Reader> reader = Reader::openUnpublished(file);
    const std::optional<ChecksumPlace> sums = reader->checksums();
    if (!sums) throw StoreError(file.finalPath(), "", "has no checksums");
    const ChecksumReport report = compareChecksums(file.temporaryPath(), *sums);
    if (!report.tableIsDamaged && report.damagedBlocks.empty()) return reader;
  } catch (const StoreError&) {
    // Whatever is wrong with a file that nobody will see, its user learns the same of it.
  }
  throw StoreError(file.finalPath(), "", "cannot be read back as it was written");
}

std::shared_ptr<const Reader> upgrade(const std::string& oldPath, const std::string& newPath) {
  const std::int64_t bytes = checkBeforeOpening(oldPath).bytes;
  requireOtherFile(oldPath, newPath);
  return saidOf(oldPath, newPath, [&] {
    // The child writes, and its parent gives the name: what crashes after its work has left nothing under it, and
    // waiting for a slow disk counts as nobody's time.
    base::OutputFile file(newPath);
    base::runLimited(oldPath, base::limitsFor(bytes), [&] {
      writeUpgraded(oldPath, file);
      return std::string();
    });
    // A child that went astray may have left anything.
    std::shared_ptr<const Reader> written = requireComplete(file);
    file.publish();
    return written;
  });
}

bool isForeign(const std::string& path) {
  constexpr std::string_view strictStart = "\x89HDF\r\n\x1a\n\3\x8\x8";  // signature, superblock 3, sizes of 8 bytes
  std::array<char, strictStart.size()> start{};
  // Without waiting: opening a pipe would wait for somebody to write into it.
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  const bool isRegular = file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
  return isRegular && readStart(file.get(), path, start) == start.size() &&
         std::string_view(start.data(), start.size()) != strictStart;
}

int foreignLayout(const std::string& path) {
  const std::int64_t bytes = checkBeforeOpening(path).bytes;
  const std::string layout = base::runLimited(path, base::limitsFor(bytes), [&] {
    int found = 0;
    openDatabase(path, found);
    return std::to_string(found);
  });
  return layout == "1" ? 1 : kNewestLayout;
}

}  // namespace odbstore
