// Finds labels in a list of them.
#pragma once

#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace base {

// Labels may be in any order and have gaps. Of duplicates the first index counts.
class LabelIndex {
 public:
  LabelIndex() = default;
  explicit LabelIndex(std::span<const int> labels);

  // The index of a label in the list, -1 if it does not occur.
  int placeOf(int label) const;
  bool contains(int label) const { return placeOf(label) >= 0; }
  bool isEmpty() const { return places_.empty() && sorted_.empty(); }

  // A label that occurs more than once.
  std::optional<int> repeated() const { return repeated_; }

 private:
  void fillPlaces(std::span<const int> labels);
  void fillSorted(std::span<const int> labels);

  // A table over all labels from first_ on where they lie close together, else pairs of label and place.
  long first_ = 0;
  std::vector<int> places_;
  std::vector<std::pair<int, int>> sorted_;
  std::optional<int> repeated_;
};

}  // namespace base
