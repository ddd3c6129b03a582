// Checks one database in every way there is.
#pragma once

#include <string>
#include <vector>

namespace verify {

// What came of it. A file without checksums may be sound as far as can be told.
struct Verdict {
  std::vector<std::string> findings;  // what is wrong, each with the file and the place in it; empty: nothing
  bool hasChecksums = false;
  std::string path;
};

// Checks the file's first bytes and size, every block against its checksum, every object against the layout's profile,
// and shapes and references as the extraction needs them. Never throws for what is wrong with the file;
// std::bad_alloc where it asks for more memory than there is.
Verdict verifyFile(const std::string& path);

}  // namespace verify
