#include "importers/formats/table.h"

#include "importers/calculix/calculix_importer.h"
#include "importers/vtk/vtk_importer.h"

namespace importers {

const std::vector<Format>& allFormats() {
  static const std::vector<Format> table = {
      {"calculix", "CalculiX: .frd (ASCII, binary), with .dat, .sta and the deck .inp", calculix::makeImporter},
      {"vtk", "VTK: .vtu, .pvtu, .pvd, .vtm, and legacy .vtk (unstructured grids)", vtk::makeImporter},
  };
  return table;
}

}  // namespace importers
