// A made-up format of results, which shows what a format needs: this folder and a row of the table.
//
//   listed results
//   node 1 0 0 0
//   element 1 TRI3 1 2 3
//   node-set TOP 1 2
//   step 1 pull
//   frame 1 0.5
//   field U 1 2 3            of the frame: a scalar, vector or tensor by the number of components
//   1 0.5 0 0                a node and its components
//   history U2 7 0 0 1 2.5   of the step: output, node, pairs of abscissa and value
#pragma once

#include <memory>

#include "importers/run/importer.h"

namespace importers::made_up {

std::unique_ptr<Importer> makeImporter();

}  // namespace importers::made_up
