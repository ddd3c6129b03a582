#include "batch/run/working_files.h"

#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <initializer_list>
#include <span>

#include "base/descriptor.h"
#include "batch/state/batch_directory.h"

namespace batch {

namespace {

constexpr std::int64_t kMostOfLog = std::int64_t{1} << 20U;

}  // namespace

std::string logText(int log) {
  struct stat status {};
  if (::fstat(log, &status) != 0) return {};
  const std::int64_t begin = std::max<std::int64_t>(status.st_size - kMostOfLog, 0);
  std::string text(static_cast<std::size_t>(status.st_size - begin), '\0');
  const auto got = base::readAt(log, begin, std::as_writable_bytes(std::span(text)));
  text.resize(got.value_or(0));
  if (begin == 0) return text;
  const std::size_t lineEnd = text.find('\n');
  const std::size_t cut = lineEnd == std::string::npos ? 0 : lineEnd + 1;
  return fmt::format("({} bytes left out)\n", static_cast<std::size_t>(begin) + cut) + text.substr(cut);
}

void removeWorkingFiles(const std::string& directory) {
  const std::string marker = directory + "/" + kMarkerName;
  for (const std::string& path : {marker, marker + ".tmp", directory + "/" + kParamsName, directory + "/" + kLogName}) {
    ::unlink(path.c_str());
  }
  ::rmdir(directory.c_str());
}

}  // namespace batch
