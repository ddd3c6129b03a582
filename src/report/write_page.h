// A database as one page that a browser shows without a network.
#pragma once

#include <cstddef>
#include <string>

#include "base/diagnostic.h"

namespace report {

struct PageRequest {
  std::string database;
  std::string params;         // the records of an extraction; empty for none
  std::string configuration;  // of that extraction; empty for none
  std::string messages;       // what the import has said; empty for none
  std::string page;           // the file to write
  std::size_t mostBytes = 15'000'000;
};

struct PageSummary {
  std::size_t bytes = 0;
  std::size_t triangles = 0;
  std::size_t frames = 0;   // on the page
  std::size_t records = 0;  // likewise
};

// Writes the page; nothing is there under its name before it is complete. Tells `warn` what has been left out for want
// of room, and what else users should know. Throws FileError for files that cannot be read, written or understood.
PageSummary writePage(const PageRequest& request, const base::DiagnosticSink& warn);

}  // namespace report
