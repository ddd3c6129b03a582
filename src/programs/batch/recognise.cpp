#include "recognise.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <exception>
#include <span>
#include <string_view>

#include "base/descriptor.h"

namespace batch {

namespace {

constexpr std::string_view kHdf5 = "\x89HDF\r\n\x1a\n";

// The first bytes of a regular file; nothing for anything else.
std::string startOf(const std::string& path) {
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  std::string start(importers::Importer::kStartBytes, '\0');
  start.resize(base::readAt(file.get(), 0, std::as_writable_bytes(std::span(start))).value_or(0));
  return start;
}

}  // namespace

InputFormats::InputFormats(const std::vector<importers::Format>& table) : formats_(importers::makeFormats(table)) {}

// Formats of others are HDF5 as well.
bool InputFormats::isOfAFormat(const std::string& start, const std::string& path) const {
  return std::any_of(formats_.begin(), formats_.end(), [&](const importers::KnownFormat& known) {
    return known.importer && known.importer->recognises(start, path);
  });
}

Recognised InputFormats::recognise(const std::string& path) const {
  if (path.ends_with(".odb")) return {true, {path}};
  const std::string start = startOf(path);
  if (start.starts_with(kHdf5) && !isOfAFormat(start, path)) return {true, {path}};
  try {
    const importers::FoundFormat found = importers::findFormat(formats_, path, "");
    return {false, found.format->importer->inputs({found.results})};
  } catch (const std::exception&) {
    return {false, {path}};
  }
}

}  // namespace batch
