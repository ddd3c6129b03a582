// One history region.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// Announces the region on standard output and hands each of its outputs, in the order of their names, to
// writeHistoryOutput with the region's label: of the node, the element, the integration point, the section point and
// the set that the history may belong to, the last one that is present. With a depth below 1 it only announces.
void processHistoryRegion(const odb_HistoryRegion& region, std::ostream& out, odb_String stepName, odb_String indent,
                          int depth);
