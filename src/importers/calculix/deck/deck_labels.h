// Which labels the sets of a deck may take in, and how many.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/label_index.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// Bounds the work and the memory that sets take by the size of their deck: ranges, and sets that take in others, name
// any number of labels in a few bytes.
class LabelBudget {
 public:
  explicit LabelBudget(std::uint64_t bytesOfDeck);

  // Counts labels that a set at a place takes in. An ImportError once there are too many in all.
  void take(std::uint64_t labels, const SourcePlace& place);

 private:
  std::uint64_t limit_;
  std::uint64_t left_;
};

// The labels of the nodes or of the elements that a deck has.
class MeshLabels {
 public:
  // Where `isWhole` is false the deck does not show the whole mesh, and every label counts as one of it.
  MeshLabels(std::span<const int> labels, bool isWhole);

  bool contains(int label) const { return !isWhole_ || index_.contains(label); }
  // Appends those of first, first + increment, ... up to last that are of the mesh. The increment is positive.
  void appendRange(std::int64_t first, std::int64_t last, std::int64_t increment, std::vector<int>& to) const;
  // How many labels appendRange() looks at.
  std::uint64_t costOfRange(std::int64_t first, std::int64_t last, std::int64_t increment) const;

 private:
  bool isWhole_;
  base::LabelIndex index_;
  std::vector<int> sorted_;
};

}  // namespace importers::calculix
