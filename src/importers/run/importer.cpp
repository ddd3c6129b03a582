#include "importers/run/importer.h"

#include <filesystem>

namespace importers {

std::string Importer::databaseName(const std::string& results) const {
  return std::filesystem::path(results).replace_extension(".odb").string();
}

}  // namespace importers
