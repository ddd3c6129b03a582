#include "importers/diagnostics.h"

namespace importers {

std::string placeIn(const std::string& file, std::int64_t line) {
  return line > 0 ? file + ":" + std::to_string(line) : file;
}

ImportError::ImportError(const std::string& file, std::int64_t line, const std::string& reason)
    : std::runtime_error(placeIn(file, line) + ": error: " + reason), line_(line), reason_(reason) {}

}  // namespace importers
