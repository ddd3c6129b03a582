#include "importers/calculix/frd/element_codes.h"

#include <array>

namespace importers::calculix {

namespace {

constexpr std::array<int, 10> kSameOrder = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
// The edges between bottom and top come before those of the top.
constexpr std::array<int, 20> kBrickOrder = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 16, 17, 18, 19, 12, 13, 14, 15};
constexpr std::array<int, 15> kWedgeOrder = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 13, 14, 9, 10, 11};
// Both ends come before the middle.
constexpr std::array<int, 3> kLineOrder = {0, 2, 1};

constexpr std::span<const int> sameOrder(std::size_t nodes) { return std::span<const int>(kSameOrder).first(nodes); }

constexpr std::array<ElementCode, kElementCodes> kCodes = {{
    {"HEX8", sameOrder(8)},
    {"WEDGE6", sameOrder(6)},
    {"TET4", sameOrder(4)},
    {"HEX20", kBrickOrder},
    {"WEDGE15", kWedgeOrder},
    {"TET10", sameOrder(10)},
    {"TRI3", sameOrder(3)},
    {"TRI6", sameOrder(6)},
    {"QUAD4", sameOrder(4)},
    {"QUAD8", sameOrder(8)},
    {"LINE2", sameOrder(2)},
    {"LINE3", kLineOrder},
}};

}  // namespace

const ElementCode& elementCode(int code) { return kCodes.at(static_cast<std::size_t>(code) - 1); }

}  // namespace importers::calculix
