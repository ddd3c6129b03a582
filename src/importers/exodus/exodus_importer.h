// Results in Exodus II files.
#pragma once

#include <memory>

#include "importers/run/importer.h"

namespace importers::exodus {

std::unique_ptr<Importer> makeImporter();

}  // namespace importers::exodus
