#include "recognise.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <exception>
#include <span>
#include <string_view>

#include "base/descriptor.h"
#include "importers/formats/table.h"

namespace batch {

namespace {

bool beginsAsDatabase(const std::string& path) {
  constexpr std::string_view kSignature = "\x89HDF\r\n\x1a\n";
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  std::array<char, kSignature.size()> start{};
  const auto got = base::readAt(file.get(), 0, std::as_writable_bytes(std::span(start)));
  return got == start.size() && std::string_view(start.data(), start.size()) == kSignature;
}

}  // namespace

InputFormats::InputFormats() : formats_(importers::makeFormats(importers::allFormats())) {}

Recognised InputFormats::recognise(const std::string& path) const {
  if (path.ends_with(".odb") || beginsAsDatabase(path)) return {true, {path}};
  try {
    const importers::FoundFormat found = importers::findFormat(formats_, path, "");
    return {false, found.format->importer->inputs({found.results})};
  } catch (const std::exception&) {
    return {false, {path}};
  }
}

}  // namespace batch
