// Errors, warnings and notes of importers.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/diagnostic.h"

namespace importers {

// A place in the files of a run.
using SourcePlace = base::Place;

// Receives warnings and notes, each once for each time that it comes up.
using WarningSink = base::DiagnosticSink;

// A file that cannot be imported. what() is "<file>:<line>: error: <reason>", without the line if there is none.
class ImportError : public std::runtime_error {
 public:
  ImportError(SourcePlace place, std::string reason);
  ImportError(std::string file, std::int64_t line, std::string reason);

  const SourcePlace& place() const { return place_; }
  const std::string& reason() const { return reason_; }

 private:
  SourcePlace place_;
  std::string reason_;
};

// "A, B, C" for a message; of many names the first ones and how many there are more.
std::string listed(const std::vector<std::string>& names);

// Warns if a name for the database has control characters, which storableText() replaces by blanks.
void warnOfControlCharacters(const std::string& name, const SourcePlace& place, const WarningSink& warn);

// Passes each message on to `warn` once, for files that are read several times. `warn` must outlive the result.
WarningSink onceOnly(const WarningSink& warn);

}  // namespace importers
