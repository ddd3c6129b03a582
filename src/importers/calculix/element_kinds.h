// The element types of the solver's decks.
#pragma once

#include <optional>
#include <string_view>

#include "importers/mass/shape_functions.h"

namespace importers::calculix {

// What an element is made of: this decides how its section gives it mass.
enum class Family {
  unknown,  // also elements of the user
  massless,
  point,
  solid,
  shell,
  membrane,
  plane,
  axisymmetric,
  beam,
  truss
};

struct ElementKind {
  Family family = Family::unknown;
  int nodes = 0;                     // 0 where that is not known
  std::optional<mass::Shape> shape;  // where it has one: not of points, springs and their like
};

// `type` in capitals. Variants of a type (C3D20R, C3D8I) are the same kind.
ElementKind elementKind(std::string_view type);

}  // namespace importers::calculix
