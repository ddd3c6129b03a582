// What one file of VTK holds: a grid with its arrays, or the names of files that do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "importers/input/diagnostics.h"
#include "importers/vtk/stored_array.h"

namespace importers::vtk {

// How a file says which points a cell has.
enum class CellLists {
  ends,    // `offsets` has the end of each cell in `connectivity`
  begins,  // `offsets` has a 0 before these, one number more than cells
  counts   // `connectivity` has the number of points before those of each cell; no `offsets`
};

// A part of a grid with points and cells of its own.
struct Piece {
  std::uint64_t points = 0;  // at most the largest label, and so are cells
  std::uint64_t cells = 0;
  std::uint64_t copies = 0;  // cells that are ghosts, known once the arrays are read
  std::int64_t line = 0;
  StoredArray coordinates;
  CellLists lists = CellLists::ends;
  StoredArray offsets;
  StoredArray connectivity;  // where there are `offsets`, its length is that of the last of them
  StoredArray types;
  std::vector<StoredArray> pointData;
  std::vector<StoredArray> cellData;
};

// Something that is left out, and where the file has it.
using Remark = std::pair<std::int64_t, std::string>;

struct Grid {
  std::string form;   // "appended raw", "ASCII", ...
  std::string title;  // of legacy files
  std::vector<Piece> pieces;
  std::vector<StoredArray> fieldData;
  std::vector<Remark> remarks;
};

// A file that another one names.
struct NamedFile {
  std::string path;
  std::vector<std::string> blocks;  // that it lies in, from the outermost
  std::optional<double> time;       // of collections in time
  std::int64_t line = 0;            // where it is named
};

struct Collection {
  std::string form;  // "PVD", ...
  std::vector<NamedFile> files;
  std::vector<StoredArray> fieldData;
};

using VtkFile = std::variant<Grid, Collection>;

class InputFile;

// A file of VTK of a kind that is not imported.
class OtherKind : public ImportError {
 public:
  using ImportError::ImportError;
};

// Whether a file that starts like this is XML of VTK, or a legacy file.
bool isXmlStart(std::string_view start);
bool isLegacyStart(std::string_view start);

// Reads what the file says of its arrays, and no arrays. An ImportError with the line for what is no such file, is
// damaged, or of a kind that is not imported, which it names; CutOff for a file that ends too early.
VtkFile readVtkFile(const InputFile& file);

// Paths of the files that a collection names; none for a grid, which is not read. Throws as above.
std::vector<std::string> filesNamedBy(const InputFile& file);

}  // namespace importers::vtk
