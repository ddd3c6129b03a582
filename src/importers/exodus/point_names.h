// Variables whose names end in the number of an integration point.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace importers::exodus {

// A variable, or those of all integration points under one name.
struct PointVariable {
  std::string name;
  std::vector<std::size_t> variables;  // places; of points in their order
  bool isOfPoints = false;
};

// "stress_xx_1 .. stress_xx_8" and "stress_xx_qp_0 .. _7" become one each: two or more numbers that follow each other
// from 0 or 1 on. Where a number comes twice, or one is missing, all stay as they are.
std::vector<PointVariable> gatherPoints(std::span<const std::string> names);

}  // namespace importers::exodus
