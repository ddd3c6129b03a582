// What an importer has to say: where a text file is wrong, and what the user should know.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace importers {

// Where in the files of a run something is said of.
struct SourcePlace {
  std::string file;
  std::int64_t line = 0;  // 0 for the file as a whole
};

// A file that cannot be imported. what() is "<file>:<line>: error: <reason>", the line left out where there is none.
class ImportError : public std::runtime_error {
 public:
  ImportError(const std::string& file, std::int64_t line, const std::string& reason);

  std::int64_t line() const { return line_; }
  const std::string& reason() const { return reason_; }

 private:
  std::int64_t line_;
  std::string reason_;
};

// "<file>:<line>", or the file alone for line 0.
std::string placeIn(const std::string& file, std::int64_t line);

// "A, B, C" for a message; of many names the first ones and how many there are more.
std::string listed(const std::vector<std::string>& names);

// Receives warnings, complete with their place, one line each.
using WarningSink = std::function<void(const std::string&)>;
// Passes each text on to `warn` once, for files that are read several times. `warn` must live as long.
WarningSink onceOnly(const WarningSink& warn);

}  // namespace importers
