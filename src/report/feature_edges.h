// The edges that show the shape of a model.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "report/skin.h"

namespace report {

// Pairs of nodes, the lower one first, ascending: edges that one face alone or more than two have, and those where two
// faces meet at more than `degrees`. `points` are the coordinates of the nodes, [nodes, 3]. The edge of a quadratic
// face is the two pieces on either side of its middle. Which way round faces are does not matter.
std::vector<std::int32_t> featureEdges(std::span<const SkinFace> faces, std::span<const float> points, double degrees);

}  // namespace report
