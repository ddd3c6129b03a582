#include "program_files.h"

#include <filesystem>
#include <limits>

#include "base/file_error.h"
#include "batch/state/small_files.h"

namespace batch {

std::string textOfFile(const std::string& path) {
  const auto text = readSmallFile(path, std::numeric_limits<std::size_t>::max());
  if (text) return *text;
  throw base::NoFileError(path, std::filesystem::exists(path) ? "cannot be read" : "does not exist");
}

}  // namespace batch
