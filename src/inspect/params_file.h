// params.txt and its marker, for those who read them.
#pragma once

#include <string>

namespace inspect {

enum class MarkerState {
  there,
  missing,
  foreign  // it does not say what a run's does, or is older than the records: it speaks for others
};

struct ParamsFile {
  std::string path;
  std::string text;
  std::string marker;  // its path
  MarkerState state = MarkerState::missing;
};

// Reads the records at `path`; that of a directory is params.txt in it. The marker is paramsdone.txt beside them, and
// is looked at first, so that one that is there speaks for what is read. Throws base::NoFileError where there is no
// regular file, base::FileError where it cannot be read.
ParamsFile readParams(const std::string& path);

}  // namespace inspect
