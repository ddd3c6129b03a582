// The files that a deck includes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include "importers/input/line_reader.h"

namespace importers::calculix {

// Finds them and limits how many are read: files may include each other endlessly.
class DeckIncludes {
 public:
  explicit DeckIncludes(const std::string& deck);

  // The path of the file that a line includes: beside the file of that line, beside the deck, in the current directory,
  // or in a directory above the deck: the solver looks in the directory in which it runs, and a job may be given to it
  // as "run7/job". Nothing if none of them exists.
  std::optional<std::string> find(const std::string& name, const LineReader& line) const;

  // Call before and after reading an included file. Throws ImportError at the including line for a file that is already
  // being read, for files nested too deeply, and for more than 1,000 files or 1 GiB in all.
  void enter(const std::string& path, const std::string& name, const LineReader& line);
  void leave(const std::string& path);

  // Of all files that were included so far.
  std::uint64_t bytes() const { return bytes_; }

 private:
  std::filesystem::path directory_;  // of the deck
  std::set<std::string> open_;       // the deck and the files being read, by their identity
  std::size_t files_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace importers::calculix
