// Copies of cells that the pieces of a partitioned grid have at their borders.
#pragma once

#include <string>
#include <vector>

#include "importers/vtk/input_file.h"
#include "importers/vtk/vtk_file.h"

namespace importers::vtk {

// Of each cell whether it is a ghost, a copy of a cell in another piece that partitioned grids have at their borders;
// empty where no cell is. Throws ImportError.
std::vector<bool> copiesAmong(const InputFile& file, const Piece& piece);

// Whether an array says which cells and points are ghosts, and is no result.
bool isOfGhosts(const std::string& name);

}  // namespace importers::vtk
