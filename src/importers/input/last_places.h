// Finds labels in a list in which a later one replaces an earlier one.
#pragma once

#include <span>
#include <vector>

#include "base/label_index.h"

namespace importers {

class LastPlaces {
 public:
  explicit LastPlaces(std::span<const int> labels);

  // The last index of a label, -1 if it does not occur.
  int placeOf(int label) const;

 private:
  base::LabelIndex index_;
  std::vector<int> last_;  // for the first place of a label; empty if none comes twice
};

}  // namespace importers
