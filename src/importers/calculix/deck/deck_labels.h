// Which labels the sets of a deck may take in, and how many.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/label_index.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// Limits the work and memory for sets: ranges, and sets that include others, name any number of labels in a few bytes.
class LabelBudget {
 public:
  explicit LabelBudget(std::uint64_t bytesOfDeck);

  // Counts labels that a set at a place includes. Throws ImportError once there are too many in all.
  void take(std::uint64_t labels, const SourcePlace& place);

 private:
  std::uint64_t limit_;
  std::uint64_t left_;
};

// The labels of the nodes or of the elements that a deck has.
class MeshLabels {
 public:
  // If `isWhole` is false the deck does not show the whole mesh, and every label is accepted.
  MeshLabels(std::span<const int> labels, bool isWhole);

  bool contains(int label) const { return !isWhole_ || index_.contains(label); }
  // Appends those labels among first, first + increment, ... up to last that are in the mesh. The increment is
  // positive.
  void appendRange(std::int64_t first, std::int64_t last, std::int64_t increment, std::vector<int>& to) const;
  // How many labels appendRange() examines.
  std::uint64_t costOfRange(std::int64_t first, std::int64_t last, std::int64_t increment) const;

 private:
  bool isWhole_;
  base::LabelIndex index_;
  std::vector<int> sorted_;
};

}  // namespace importers::calculix
