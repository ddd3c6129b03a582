#include "importers/vtk/ghosts.h"

#include <algorithm>

#include "importers/vtk/array_reader.h"

namespace importers::vtk {

namespace {

// Bits of vtkGhostType (vtkDataSetAttributes.h) of cells: a copy, one that is refined elsewhere, one that is hidden.
constexpr std::int64_t kGhostBits = 1 | 8 | 32;

}  // namespace

bool isOfGhosts(const std::string& name) { return name == "vtkGhostType" || name == "vtkGhostLevels"; }

std::vector<bool> copiesAmong(const InputFile& file, const Piece& piece) {
  std::vector<bool> isCopy;
  for (const StoredArray& array : piece.cellData) {
    if (!isOfGhosts(array.name) || array.components != 1) continue;
    // Levels count how far from the border a copy lies.
    const std::int64_t bits = array.name == "vtkGhostLevels" ? -1 : kGhostBits;
    const std::vector<std::int64_t> marks = readIntegers(file, array);
    const auto isGhost = [bits](std::int64_t mark) { return (mark & bits) != 0; };
    if (std::none_of(marks.begin(), marks.end(), isGhost)) continue;
    isCopy.resize(marks.size());
    for (std::size_t cell = 0; cell < marks.size(); ++cell) isCopy[cell] = isCopy[cell] || isGhost(marks[cell]);
  }
  return isCopy;
}

}  // namespace importers::vtk
