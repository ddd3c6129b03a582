// The import of files of VTK.
#pragma once

#include <memory>

#include "importers/run/importer.h"

namespace importers::vtk {

std::unique_ptr<Importer> makeImporter();

}  // namespace importers::vtk
