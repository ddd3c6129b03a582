// XML files of VTK: .vtu, .pvtu, .pvd and .vtm.
#pragma once

#include "importers/vtk/input_file.h"
#include "importers/vtk/vtk_file.h"

namespace importers::vtk {

// See readVtkFile(). Paths of files that it names are relative to the directory that it lies in.
VtkFile readXmlFile(const InputFile& file);

// Whether it is a .vtu, by its first tag.
bool isGridOfXml(const InputFile& file);

}  // namespace importers::vtk
