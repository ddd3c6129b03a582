#include "odbstore/layout.h"

#include <cassert>
#include <utility>

namespace odbstore {

namespace {

constexpr std::array<std::pair<Position, std::string_view>, 5> kPositionWords = {{
    {Position::nodal, "nodal"},
    {Position::integrationPoint, "integrationPoint"},
    {Position::elementNodal, "elementNodal"},
    {Position::centroid, "centroid"},
    {Position::wholeElement, "wholeElement"},
}};

}  // namespace

std::string_view positionWord(Position position) {
  for (const auto& [known, word] : kPositionWords) {
    if (known == position) return word;
  }
  return {};
}

std::optional<Position> positionFromWord(std::string_view word) {
  for (const auto& [position, known] : kPositionWords) {
    if (known == word) return position;
  }
  return std::nullopt;
}

const std::vector<std::string>& defaultTensorLabels(int type) {
  static const std::vector<std::string> full = {"11", "22", "33", "12", "13", "23"};
  static const std::vector<std::string> planar = {"11", "22", "33", "12"};
  static const std::vector<std::string> surface = {"11", "22", "12"};
  assert(isTensorType(type));
  switch (FieldType{type}) {
    case FieldType::tensor3dFull:
      return full;
    case FieldType::tensor3dPlanar:
    case FieldType::tensor2dPlanar:
      return planar;
    default:
      return surface;
  }
}

}  // namespace odbstore
