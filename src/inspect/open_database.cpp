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

}  // namespace

std::string databasePath(const std::string& name) {
  std::error_code ignored;
  const std::string completed = name + ".odb";
  return !std::filesystem::exists(name, ignored) && std::filesystem::exists(completed, ignored) ? completed : name;
}

std::shared_ptr<const odbstore::Reader> openDatabase(const std::string& name) {
  const std::string path = databasePath(name);
  if (auto reader = odbstore::Reader::openIfNewest(path)) return reader;
  const TemporaryDirectory directory;
  return odbstore::upgrade(path, directory.file("upgraded.odb"));
}

}  // namespace inspect
