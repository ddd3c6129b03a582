// Legacy files of VTK, .vtk: unstructured grids, ASCII and binary, of versions 1 to 5.
#pragma once

#include "importers/vtk/input_file.h"
#include "importers/vtk/vtk_file.h"

namespace importers::vtk {

// See readVtkFile(). Passes once over all arrays; of text it counts the words.
Grid readLegacyFile(const InputFile& file);

}  // namespace importers::vtk
