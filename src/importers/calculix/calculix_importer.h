// The importer of CalculiX results.
#pragma once

#include <memory>

#include "importers/run/importer.h"

namespace importers::calculix {

std::unique_ptr<Importer> makeImporter();

}  // namespace importers::calculix
