// Checks one database in every way there is.
#pragma once

#include <string>
#include <vector>

namespace verify {

// What came of it, worst last.
enum class State {
  sound,
  withoutChecksums,  // as far as can be told
  oldLayout,         // layout 1, all of it can be read
  noFile,            // nothing that could be opened
  damaged            // or no database, or not to be read within the limits
};

struct Verdict {
  std::string path;
  State state = State::sound;
  std::vector<std::string> findings;  // why it is not sound, each with the file and the place in it
};

// Checks the file's first bytes and size, every block against its checksum, every object against the layout's profile,
// and shapes and references as the extraction needs them. A file of layout 1 has none of that to be checked, and is
// read from begin to end. Never throws for what is wrong with the file; std::bad_alloc where it asks for more memory
// than there is.
Verdict verifyFile(const std::string& path);

}  // namespace verify
