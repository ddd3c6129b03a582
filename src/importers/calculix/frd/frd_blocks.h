// What a CalculiX result file (.frd) holds, block by block.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/unfilled.h"

namespace importers::calculix {

// What the header lines before the first block say.
struct FrdHeader {
  std::string title;
  std::string program;  // name and version
};

struct FrdNodes {
  std::int64_t line = 0;  // of its header
  std::vector<int> labels;
  std::vector<double> coordinates;  // [nodes, 3]
};

// Elements of one type code (elementCode()), nodes in the order of the solver's deck.
struct FrdElementGroup {
  int code = 0;
  int nodesPerElement = 0;
  std::vector<int> labels;
  std::vector<int> connectivity;  // [elements, nodesPerElement]
};

struct FrdElements {
  std::int64_t line = 0;                // of its header
  std::vector<FrdElementGroup> groups;  // by the first appearance of their codes, elements in file order
};

enum class AnalysisKind { steady = 0, time = 1, modal = 2, other = 3, buckling = 4 };

// How a result component behaves, as the file declares it.
enum class ComponentKind { scalar = 1, vector = 2, matrix = 4, complexVector = 12, complexMatrix = 14 };

struct FrdComponent {
  std::string name;
  int kind = 1;  // ComponentKind where it is a known one
};

// How the rows of a result are written.
enum class RowFormat { text = 1, floats = 2, doubles = 3 };

// One field of one frame.
struct FrdResult {
  std::size_t ordinal = 0;  // among all result blocks of the file, from 0
  std::string name;
  std::vector<FrdComponent> components;  // those that are stored
  int step = 0;
  int increment = 0;
  int frameCounter = 0;
  double value = 0.0;  // total time, frequency, buckling factor
  AnalysisKind kind = AnalysisKind::steady;
  std::optional<int> nodalDiameter;  // of a mode of a cyclic model
  int mode = 0;                      // among those of its nodal diameter, from 1; 0 for none
  bool isPeriodic = false;           // the value is a time within a period of a steady state
  std::int64_t line = 0;             // of its header
  RowFormat format = RowFormat::text;
  std::size_t rows = 0;                // also counts skipped ones
  base::UnfilledVector<int> labels;    // of nodes
  base::UnfilledVector<float> values;  // [labels, components]
};

using FrdBlock = std::variant<FrdNodes, FrdElements, FrdResult>;

}  // namespace importers::calculix
