// A point of a section.
//
//     const odb_SectionPoint& point = location.sectionPoints().constGet(0);
//     std::printf("%d %s\n", point.number(), point.description().cStr());
#pragma once

#include "odbaccess/odb_String.h"

// A point of a shell's or beam's section.
class odb_SectionPoint {
 public:
  odb_SectionPoint() = default;
  odb_SectionPoint(int number, odb_String description) : number_(number), description_(std::move(description)) {}

  // From 1; 0 when there is none.
  int number() const { return number_; }
  odb_String description() const { return description_; }

 private:
  int number_ = 0;
  odb_String description_;
};
