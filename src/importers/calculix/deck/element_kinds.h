// The element types of the solver's decks.
#pragma once

#include <optional>
#include <string_view>

#include "elements/shape_functions.h"

namespace importers::calculix {

// The body of an element, which decides how its section gives it mass.
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
  int nodes = 0;                         // 0 if that is not known
  std::optional<elements::Shape> shape;  // where it has one: not of points, springs and their like

  // Whether the element has stresses of its own. Springs, dashpots, gaps, couplings and points have none: what the
  // result file shows at their nodes comes from their neighbours. Unknown elements count as having some.
  bool hasTensors() const { return shape.has_value() || family == Family::unknown; }
};

// `type` in capitals. Variants of a type (C3D20R, C3D8I) are the same kind.
ElementKind elementKind(std::string_view type);

}  // namespace importers::calculix
