// Where on the model the rows of a field output lie.
//
//     const odb_SequenceFieldLocation& locations = field.locations();
//     for (int i = 0; i < locations.size(); ++i) {
//       if (locations.constGet(i).position() == odb_Enum::integrationPoint) ...
//     }
#pragma once

#include <utility>
#include <vector>

#include "odbaccess/cow_List.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_SectionPoint.h"
#include "odbaccess/odb_Sequence.h"

// A position on the elements or nodes, with the section points at which the field was written there.
class odb_FieldLocation {
 public:
  odb_FieldLocation(odb_Enum::odb_ResultPositionEnum position, odb_Sequence<odb_SectionPoint> sectionPoints)
      : position_(position), sectionPoints_(std::move(sectionPoints)) {}

  odb_Enum::odb_ResultPositionEnum position() const { return position_; }
  // Each once; none for solids. Good as long as this object.
  const odb_Sequence<odb_SectionPoint>& sectionPoints() const { return sectionPoints_; }

 private:
  odb_Enum::odb_ResultPositionEnum position_;
  odb_Sequence<odb_SectionPoint> sectionPoints_;
};

// Each position once, in the order of the blocks.
class odb_SequenceFieldLocation {
 public:
  odb_SequenceFieldLocation() = default;
  explicit odb_SequenceFieldLocation(std::vector<odb_FieldLocation> locations) : locations_(std::move(locations)) {}

  int size() const { return locations_.size(); }
  // Location `index`, 0 <= index < size(). Good as long as this sequence.
  const odb_FieldLocation& constGet(unsigned index) const { return locations_.constGet(static_cast<int>(index)); }

 private:
  cow_List<odb_FieldLocation> locations_;
};
