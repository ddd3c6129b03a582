#include "importers/exodus/element_shapes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <numeric>
#include <utility>

#include "importers/input/text_fields.h"

namespace importers::exodus {

namespace {

using Nodes = std::vector<std::size_t>;  // from 1, as in the tables of the format's manual

struct Shape {
  std::string_view name;
  std::size_t corners;
  std::vector<Nodes> sides;                                // their corners
  std::vector<std::pair<std::size_t, std::size_t>> edges;  // with a node in the middle, in the order of these nodes
  std::vector<std::size_t> middles;                        // sides with a node in their middle, in the order of these
};

// Figures of the sides and nodes of elements: L. A. Schoof and V. R. Yarberry, EXODUS II: A Finite Element Data Model,
// SAND92-2137; the elements that came later by the library's documentation.
const std::vector<Shape>& shapes() {
  static const std::vector<Shape> all = {
      {"HEX",
       8,
       {{1, 2, 6, 5}, {2, 3, 7, 6}, {3, 4, 8, 7}, {1, 5, 8, 4}, {1, 4, 3, 2}, {5, 6, 7, 8}},
       {{1, 2}, {2, 3}, {3, 4}, {4, 1}, {1, 5}, {2, 6}, {3, 7}, {4, 8}, {5, 6}, {6, 7}, {7, 8}, {8, 5}},
       {0, 5, 6, 4, 2, 1, 3}},
      {"TET",
       4,
       {{1, 2, 4}, {2, 3, 4}, {1, 4, 3}, {1, 3, 2}},
       {{1, 2}, {2, 3}, {3, 1}, {1, 4}, {2, 4}, {3, 4}},
       {4, 1, 2, 3}},
      {"WEDGE",
       6,
       {{1, 2, 5, 4}, {2, 3, 6, 5}, {1, 4, 6, 3}, {1, 3, 2}, {4, 5, 6}},
       {{1, 2}, {2, 3}, {3, 1}, {1, 4}, {2, 5}, {3, 6}, {4, 5}, {5, 6}, {6, 4}},
       {1, 2, 3}},
      {"PYRAMID",
       5,
       {{1, 2, 5}, {2, 3, 5}, {3, 4, 5}, {1, 5, 4}, {1, 4, 3, 2}},
       {{1, 2}, {2, 3}, {3, 4}, {4, 1}, {1, 5}, {2, 5}, {3, 5}, {4, 5}},
       {5}},
      {"QUAD", 4, {{1, 2}, {2, 3}, {3, 4}, {4, 1}}, {{1, 2}, {2, 3}, {3, 4}, {4, 1}}, {}},
      {"TRI", 3, {{1, 2}, {2, 3}, {3, 1}}, {{1, 2}, {2, 3}, {3, 1}}, {}},
      {"LINE", 2, {{1}, {2}}, {}, {}},
  };
  return all;
}

// How names of elements begin, in any case, and the shape that they mean.
constexpr std::array<std::pair<std::string_view, std::string_view>, 22> kBeginnings = {{
    {"HEX", "HEX"},     {"TETRA", "TET"},   {"TET", "TET"},    {"WEDGE", "WEDGE"},  {"WED", "WEDGE"},
    {"PYR", "PYRAMID"}, {"QUAD", "QUAD"},   {"SHELL", "QUAD"}, {"TRIANGLE", "TRI"}, {"TRISHELL", "TRI"},
    {"TRI", "TRI"},     {"TSHELL", "TRI"},  {"EDGE", "LINE"},  {"LINE", "LINE"},    {"BEAM", "LINE"},
    {"TRUSS", "LINE"},  {"BAR", "LINE"},    {"ROD", "LINE"},   {"SPHERE", "POINT"}, {"CIRCLE", "POINT"},
    {"NODE", "POINT"},  {"POINT", "POINT"},
}};

std::string_view shapeOf(std::string_view name, std::size_t nodes) {
  const std::string upper = upperCased(name);
  for (const auto& [beginning, shape] : kBeginnings) {
    if (!upper.starts_with(beginning)) continue;
    // SHELL3 and SHELL6 are triangles.
    return shape == "QUAD" && (nodes == 3 || nodes == 6) ? "TRI" : shape;
  }
  return "";
}

// Trusses, beams and bars, whose sides are not their ends.
bool isWholeSide(std::string_view name) {
  const std::string upper = upperCased(name);
  return upper.starts_with("TRUSS") || upper.starts_with("BEAM") || upper.starts_with("BAR") ||
         upper.starts_with("ROD");
}

Nodes allOf(std::size_t count) {
  Nodes nodes(count);
  std::iota(nodes.begin(), nodes.end(), 0U);
  return nodes;
}

Nodes sideOf(const Shape& shape, std::size_t nodes, std::size_t side) {
  Nodes found;
  const Nodes& corners = shape.sides[side - 1];
  const auto isCorner = [&](std::size_t node) {
    return std::find(corners.begin(), corners.end(), node) != corners.end();
  };
  for (const std::size_t corner : corners) found.push_back(corner - 1);
  for (std::size_t i = 0; i < shape.edges.size(); ++i) {
    if (isCorner(shape.edges[i].first) && isCorner(shape.edges[i].second)) found.push_back(shape.corners + i);
  }
  for (std::size_t i = 0; i < shape.middles.size(); ++i) {
    if (shape.middles[i] == side) found.push_back(shape.corners + shape.edges.size() + i);
  }
  std::erase_if(found, [&](std::size_t node) { return node >= nodes; });
  return found;
}

}  // namespace

std::string typeName(std::string_view name, std::size_t nodes) {
  const std::string_view shape = shapeOf(name, nodes);
  std::string upper = upperCased(name);
  while (!upper.empty() && std::isdigit(static_cast<unsigned char>(upper.back())) != 0) upper.pop_back();
  if (shape == "HEX" || shape == "TET" || shape == "WEDGE" || shape == "PYRAMID") upper = shape;
  if (upper.starts_with("QUAD")) upper = "QUAD";
  if (upper == "TRIANGLE") upper = "TRI";
  if (upper.empty()) upper = "ELEMENT";
  return upper + std::to_string(nodes);
}

std::vector<std::size_t> nodesOfSide(std::string_view name, std::size_t nodes, std::size_t dimensions,
                                     std::size_t side) {
  const std::string_view shapeName = shapeOf(name, nodes);
  if (shapeName == "POINT" || isWholeSide(name)) return allOf(nodes);
  const auto shape =
      std::find_if(shapes().begin(), shapes().end(), [&](const Shape& one) { return one.name == shapeName; });
  if (shape == shapes().end() || side == 0 || nodes < shape->corners) return {};
  // Shells have a lower and an upper face; both have all nodes.
  const bool isShell = dimensions == 3 && (shapeName == "QUAD" || shapeName == "TRI");
  if (isShell && side <= 2) return allOf(nodes);
  const std::size_t place = isShell ? side - 2 : side;
  return place > shape->sides.size() ? Nodes() : sideOf(*shape, nodes, place);
}

}  // namespace importers::exodus
