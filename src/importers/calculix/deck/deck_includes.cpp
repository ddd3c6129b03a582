#include "importers/calculix/deck/deck_includes.h"

#include <fmt/core.h>

#include <vector>

#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

constexpr std::size_t kDeepest = 32;
constexpr std::size_t kMostFiles = 1000;
constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30;

// Identifies a file whatever its name; its name if it cannot be examined.
std::string identityOf(const std::filesystem::path& path) {
  std::error_code failed;
  const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, failed);
  return failed ? path.string() : canonical.string();
}

bool isThere(const std::filesystem::path& path) {
  // Names that are too long exist no more than others.
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

std::uint64_t sizeOf(const std::string& path) {
  std::error_code failed;
  const std::uintmax_t size = std::filesystem::file_size(path, failed);
  return failed ? 0 : size;
}

}  // namespace

DeckIncludes::DeckIncludes(const std::string& deck) : directory_(std::filesystem::path(deck).parent_path()) {
  open_.insert(identityOf(deck));
}

std::optional<std::string> DeckIncludes::find(const std::string& name, const LineReader& line) const {
  std::vector<std::filesystem::path> directories = {std::filesystem::path(line.path()).parent_path(), directory_, ""};
  std::error_code failed;
  std::filesystem::path above = std::filesystem::absolute(directory_.empty() ? "." : directory_, failed);
  while (!failed && above.has_parent_path() && above != above.parent_path()) {
    above = above.parent_path();
    directories.push_back(above);
  }
  for (const std::filesystem::path& directory : directories) {
    if (isThere(directory / name)) return (directory / name).string();
  }
  return std::nullopt;
}

void DeckIncludes::enter(const std::string& path, const std::string& name, const LineReader& line) {
  if (open_.size() > kDeepest) line.fail("files include each other too deeply");
  if (!open_.insert(identityOf(path)).second) line.fail(fmt::format("{} includes itself", storableText(name)));
  bytes_ += sizeOf(path);
  if (++files_ > kMostFiles) line.fail(fmt::format("the deck includes more than {} files", kMostFiles));
  if (bytes_ > kMostBytes) line.fail(fmt::format("the deck includes more than {} bytes", kMostBytes));
}

void DeckIncludes::leave(const std::string& path) { open_.erase(identityOf(path)); }

}  // namespace importers::calculix
