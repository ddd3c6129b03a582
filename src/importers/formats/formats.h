// The formats that results are imported from, and which one a file is of.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "importers/run/importer.h"

namespace importers {

struct Format {
  const char* name;         // of --format
  const char* description;  // of --formats
  // Null if a build lacks the library that the format needs.
  std::unique_ptr<Importer> (*make)();
};

// A format of the table with its importer.
struct KnownFormat {
  const Format* format = nullptr;
  std::unique_ptr<Importer> importer;  // null if it is not in this build
};

// An importer for every row of the table.
std::vector<KnownFormat> makeFormats(const std::vector<Format>& table);

// Which format a file is of, and the file itself.
struct FoundFormat {
  const KnownFormat* format = nullptr;
  std::string results;
};

// Recognised by content, or the format called `forced`. Throws ImportError, listing the formats, if none or several
// recognise the file, if there is no format of that name, or if it is not in this build.
FoundFormat findFormat(const std::vector<KnownFormat>& formats, const std::string& named, const std::string& forced);

// A line for each format.
std::string formatList(const std::vector<Format>& table);

}  // namespace importers
