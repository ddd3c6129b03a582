// Where on the model the rows of a field output lie.
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
  const odb_Sequence<odb_SectionPoint>& sectionPoints() const { return sectionPoints_; }

 private:
  odb_Enum::odb_ResultPositionEnum position_;
  odb_Sequence<odb_SectionPoint> sectionPoints_;
};

class odb_SequenceFieldLocation {
 public:
  odb_SequenceFieldLocation() = default;
  explicit odb_SequenceFieldLocation(std::vector<odb_FieldLocation> locations) : locations_(std::move(locations)) {}

  int size() const { return locations_.size(); }
  const odb_FieldLocation& constGet(unsigned index) const { return locations_.constGet(static_cast<int>(index)); }

 private:
  cow_List<odb_FieldLocation> locations_;
};
