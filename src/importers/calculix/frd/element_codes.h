// The element types of a CalculiX result file.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace importers::calculix {

// Codes run from 1 (an eight-node brick) to 12 (a three-node line).
inline constexpr int kElementCodes = 12;

struct ElementCode {
  const char* name;            // "HEX8"
  std::span<const int> order;  // for each node in the order of the solver's deck its place in the file
};

// `code` must be one of them.
const ElementCode& elementCode(int code);

}  // namespace importers::calculix
