#include "importers/calculix/deck/element_kinds.h"

#include <array>

namespace importers::calculix {

namespace {

using elements::Shape;

struct Start {
  std::string_view text;
  Family family;
  Shape shape;
};

// A type is known by how its name starts: longer ones first.
constexpr std::array<Start, 36> kWithShape = {{
    {"C3D20", Family::solid, Shape::brick20},
    {"C3D15", Family::solid, Shape::wedge15},
    {"C3D10", Family::solid, Shape::tetrahedron10},
    {"C3D8", Family::solid, Shape::brick8},
    {"C3D6", Family::solid, Shape::wedge6},
    {"C3D4", Family::solid, Shape::tetrahedron4},
    {"F3D8", Family::massless, Shape::brick8},
    {"F3D6", Family::massless, Shape::wedge6},
    {"F3D4", Family::massless, Shape::tetrahedron4},
    {"CPS3", Family::plane, Shape::triangle3},
    {"CPS4", Family::plane, Shape::quadrilateral4},
    {"CPS6", Family::plane, Shape::triangle6},
    {"CPS8", Family::plane, Shape::quadrilateral8},
    {"CPE3", Family::plane, Shape::triangle3},
    {"CPE4", Family::plane, Shape::quadrilateral4},
    {"CPE6", Family::plane, Shape::triangle6},
    {"CPE8", Family::plane, Shape::quadrilateral8},
    {"CAX3", Family::axisymmetric, Shape::triangle3},
    {"CAX4", Family::axisymmetric, Shape::quadrilateral4},
    {"CAX6", Family::axisymmetric, Shape::triangle6},
    {"CAX8", Family::axisymmetric, Shape::quadrilateral8},
    {"M3D3", Family::membrane, Shape::triangle3},
    {"M3D4", Family::membrane, Shape::quadrilateral4},
    {"M3D6", Family::membrane, Shape::triangle6},
    {"M3D8", Family::membrane, Shape::quadrilateral8},
    {"S3", Family::shell, Shape::triangle3},
    {"S4", Family::shell, Shape::quadrilateral4},
    {"S6", Family::shell, Shape::triangle6},
    {"S8", Family::shell, Shape::quadrilateral8},
    {"US3", Family::shell, Shape::triangle3},
    {"B21", Family::beam, Shape::line2},
    {"B31", Family::beam, Shape::line2},
    {"B32", Family::beam, Shape::line3},
    {"T2D2", Family::truss, Shape::line2},
    {"T3D2", Family::truss, Shape::line2},
    {"T3D3", Family::truss, Shape::line3},
}};

struct Other {
  std::string_view text;
  Family family;
  int nodes;
};

// Springs, dashpots, gaps and couplings.
constexpr std::array<Other, 7> kOthers = {{
    {"GAPUNI", Family::massless, 2},
    {"DASHPOTA", Family::massless, 2},
    {"SPRINGA", Family::massless, 2},
    {"SPRING1", Family::massless, 1},
    {"SPRING2", Family::massless, 2},
    {"DCOUP3D", Family::massless, 1},
    {"MASS", Family::point, 1},
}};

}  // namespace

ElementKind elementKind(std::string_view type) {
  for (const Start& start : kWithShape) {
    if (type.starts_with(start.text))
      return {start.family, static_cast<int>(elements::nodesOf(start.shape)), start.shape};
  }
  for (const Other& other : kOthers) {
    if (type.starts_with(other.text)) return {other.family, other.nodes, {}};
  }
  // A beam that the solver brings along; other elements of the user may be called U10.
  if (type == "U1") return {Family::beam, 2, Shape::line2};
  // The element of a flow network.
  if (type == "D") return {Family::massless, 3, {}};
  return {};
}

}  // namespace importers::calculix
