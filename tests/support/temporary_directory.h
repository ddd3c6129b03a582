// A directory of its own for each test that writes files.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

// Removed with everything in it when the test is over.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kolvex-test.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = pattern;
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }

  std::size_t entries() const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(path_)) ++count;
    return count;
  }

 private:
  std::filesystem::path path_;
};
