// Which labels occur.
#pragma once

#include <cstdint>
#include <vector>

namespace inspect {

// Nodes and elements are mostly numbered without large gaps: a bit for each number between the first and the last is
// then less than the labels themselves, and a look-up is one step. Labels that are far apart are sorted instead.
class LabelSet {
 public:
  explicit LabelSet(const std::vector<int>& labels);

  bool contains(int label) const;

 private:
  std::int64_t first_ = 0;
  std::vector<bool> bits_;
  std::vector<int> sorted_;  // each once, ascending; empty where there are bits
};

}  // namespace inspect
