// Elements as Exodus II numbers their nodes and sides.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace importers::exodus {

// The name of a type of elements in the database: that of the shape and the number of nodes, HEX8, for the many names
// that programs give to elements of one shape; of others the name in capitals and the number.
std::string typeName(std::string_view name, std::size_t nodes);

// The nodes of a side, as places among those of the element, middle ones too; sides count from 1. Empty for sides and
// shapes that are not known. `dimensions` are those of the model: a triangle has edges as sides in a plane, and two
// faces before them in space.
std::vector<std::size_t> nodesOfSide(std::string_view name, std::size_t nodes, std::size_t dimensions,
                                     std::size_t side);

}  // namespace importers::exodus
