// Finds labels in a list in which a later one replaces an earlier one.
#pragma once

#include <span>
#include <vector>

#include "base/label_index.h"

namespace importers {

class LastPlaces {
 public:
  explicit LastPlaces(std::span<const int> labels);

  // Where a label stands last, -1 when it is not there.
  int placeOf(int label) const;

 private:
  base::LabelIndex index_;
  std::vector<int> last_;  // for the first place of a label; empty where none comes twice
};

}  // namespace importers
