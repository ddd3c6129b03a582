// Models of one sector.
//
//     if (odb.hasSectorDefinition()) {
//       const odb_SequenceFloat from = odb.sectorDefinition().symmetryAxis().constGet(0);
//       use(from[0], from[1], from[2]);
//     }
#pragma once

#include <utility>

#include "odbaccess/odb_Sequence.h"

// The axis about which a model of one sector repeats.
class odb_SectorDefinition {
 public:
  explicit odb_SectorDefinition(odb_SequenceSequenceFloat symmetryAxis) : symmetryAxis_(std::move(symmetryAxis)) {}

  // Two points, three coordinates each.
  odb_SequenceSequenceFloat symmetryAxis() const { return symmetryAxis_; }

 private:
  odb_SequenceSequenceFloat symmetryAxis_;
};
