// Checks one database in every way there is.
#pragma once

#include <string>
#include <vector>

#include "base/diagnostic.h"

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
  // Why it is not sound, each with the file and the object in it: errors, or a note on what cannot be told.
  std::vector<base::Diagnostic> findings;
};

// Checks the file's first bytes and size; all its bytes against their sums, those of a catalog or of /checksums; every
// object against the layout's profile, whether a program would read it or not; the catalog against the structure;
// shapes and references as the extraction needs them; every label, index and packed row. A file of layout 1 has none of
// that to be checked, and is read from begin to end.
//
// HDF5's structure is read by a program of its own with limits (odbstore/scan_program.h): what makes the HDF5 library
// crash, take all memory or go on for ever is a finding like any other. Of very many findings the first are told, and
// that there are more. Never throws for what is wrong with the file.
Verdict verifyFile(const std::string& path);

}  // namespace verify
