#include "inspect/open_database.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "odbstore/upgrade.h"

namespace inspect {

namespace {

// Removed with what is in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kolvex.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
    path_ = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

std::string completedName(const std::string& path) {
  std::error_code ignored;
  const std::string completed = path + ".odb";
  return !std::filesystem::exists(path, ignored) && std::filesystem::exists(completed, ignored) ? completed : path;
}

}  // namespace

std::shared_ptr<const odbstore::Reader> openDatabase(const std::string& path) {
  const std::string completed = completedName(path);
  if (auto reader = odbstore::Reader::openIfNewest(completed)) return reader;
  const TemporaryDirectory directory;
  return odbstore::upgrade(completed, directory.file("upgraded.odb"));
}

}  // namespace inspect
