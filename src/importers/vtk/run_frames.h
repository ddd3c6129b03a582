// The files of a run by frames: what a collection in time, the pieces of a grid, blocks and numbered files come to.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "importers/input/diagnostics.h"
#include "importers/vtk/input_file.h"
#include "importers/vtk/vtk_file.h"

namespace importers::vtk {

// A file with a grid.
struct GridFile {
  std::string path;
  std::uint64_t bytes = 0;
  std::vector<std::string> blocks;  // that it lies in, from the outermost
  Grid grid;
};

// A number of the field data, of a frame as a whole.
struct FieldValue {
  std::string name;
  double value = 0.0;
};

struct RunFrame {
  std::optional<double> time;
  std::string path;  // of the file that stands for it in messages
  std::vector<GridFile> files;
  std::vector<FieldValue> values;
};

struct RunFrames {
  std::string form;
  std::vector<RunFrame> frames;
  // Of each frame that could not be read why, and whether all of those are the last ones.
  std::vector<ImportError> damage;
  bool endsWithDamage = false;
};

// Reads what the files say of their arrays, and their field data. `isSeries` takes all files of the numbered series
// that `path` belongs to. Of files that a collection names those of other kinds are left out, unless `isStrict`. What
// is left out goes to `warn`. Throws ImportError where no frame can be read.
RunFrames readRun(const std::string& path, bool isSeries, bool isStrict, const WarningSink& warn);

// The files of a directory that are named alike but for the last number before the ending, by their numbers;
// {path} where the name has no number.
std::vector<std::pair<double, std::string>> seriesOf(const std::string& path);

// Every file that a run reads; of what cannot be read as much as is known.
std::vector<std::string> filesOf(const std::string& path, bool isSeries);

}  // namespace importers::vtk
