// The faces of elements as surfaces of a deck name them.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "importers/calculix/deck/element_kinds.h"

namespace importers::calculix {

// The nodes of a face, as places among those of the element, middle ones too. `face` in capitals: "S1" to "S6", of
// shells also "SNEG" and "SPOS", of plane elements "SN" and "SP". The sides of shells and the faces of beams have all
// nodes of the element. Nothing for a face that the element does not have.
std::optional<std::vector<std::size_t>> nodesOfFace(const ElementKind& kind, std::string_view face);

// The number of that face among those of the solid that the solver makes of an element that has no volume of its own; 0
// for solids and for a face that the element does not have. Number 1 is the lower side of a shell and 2 the upper one.
int faceOfExpanded(const ElementKind& kind, std::string_view face);

}  // namespace importers::calculix
