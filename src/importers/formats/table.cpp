#include "importers/formats/table.h"

#include "importers/calculix/calculix_importer.h"
#include "importers/exodus/exodus_importer.h"
#include "importers/vtk/vtk_importer.h"

namespace importers {

namespace {

#ifdef KOLVEX_NETCDF
constexpr auto kMakeExodus = exodus::makeImporter;
#else
constexpr std::unique_ptr<Importer> (*kMakeExodus)() = nullptr;
#endif

}  // namespace

const std::vector<Format>& allFormats() {
  static const std::vector<Format> table = {
      {"calculix", "CalculiX: .frd (ASCII, binary), with .dat, .sta and the deck .inp", calculix::makeImporter},
      {"exodus", "Exodus II: .e, .exo, .exii, .ex2 (netCDF classic, 64-bit, netCDF-4)", kMakeExodus},
      {"vtk", "VTK: .vtu, .pvtu, .pvd, .vtm, and legacy .vtk (unstructured grids)", vtk::makeImporter},
  };
  return table;
}

}  // namespace importers
