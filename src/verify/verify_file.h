// Checks one database in all respects.
#pragma once

#include <string>
#include <vector>

#include "base/diagnostic.h"

namespace verify {

// The result, worst last.
enum class State {
  sound,
  withoutChecksums,  // otherwise sound, as far as that can be known
  oldLayout,         // layout 1, all of it can be read
  noFile,            // nothing that could be opened
  damaged            // or not a database, or not readable within the limits
};

struct Verdict {
  std::string path;
  State state = State::sound;
  // Why it is not sound, each with the file and the object: errors, or notes on what cannot be checked.
  std::vector<base::Diagnostic> findings;
};

// Checks the file's first bytes and size; all its bytes against their sums, those of a catalog or of /checksums; every
// object against the layout's profile, whether a program would read it or not; the catalog against the structure;
// shapes and references as the extraction needs them; every label, index and packed row. A file of layout 1 has none of
// these and is read completely.
//
// The HDF5 structure is read by a separate program with limits (odbstore/scan_program.h): a file that makes the HDF5
// library crash, run out of memory or run forever is a finding like any other. If there are very many findings only the
// first are listed. Never throws for a faulty file.
Verdict verifyFile(const std::string& path);

}  // namespace verify
