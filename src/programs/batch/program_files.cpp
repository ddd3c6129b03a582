#include "program_files.h"

#include <filesystem>
#include <limits>

#include "base/file_error.h"
#include "batch/state/small_files.h"

namespace batch {

std::string siblingProgram(const char* name) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

std::string textOfFile(const std::string& path) {
  const auto text = readSmallFile(path, std::numeric_limits<std::size_t>::max());
  if (text) return *text;
  throw base::NoFileError(path, std::filesystem::exists(path) ? "cannot be read" : "does not exist");
}

}  // namespace batch
