// Which formats this build knows. A new one adds its row here.
#include "importers/calculix/calculix_importer.h"
#include "importers/formats/formats.h"

namespace importers {

const std::vector<Format>& allFormats() {
  static const std::vector<Format> table = {
      {"calculix", "CalculiX: .frd (ASCII, binary), with .dat, .sta and the deck .inp", calculix::makeImporter},
  };
  return table;
}

}  // namespace importers
