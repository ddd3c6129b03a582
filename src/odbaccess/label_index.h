// Finds the rows in which labels occur.
#pragma once

#include <vector>

namespace odb_detail {

// The rows in which each label occurs, ascending by label, then by row: built once per location.
class LabelIndex {
 public:
  explicit LabelIndex(const std::vector<int>& labels);

  // The rows of those labels (ascending, each once), ascending.
  std::vector<int> rowsOf(const std::vector<int>& labels) const;

 private:
  std::vector<int> labels_;  // each once, ascending
  std::vector<int> first_;   // where the rows of labels_[i] start in rows_; one more at the end
  std::vector<int> rows_;
};

// How many different labels there are.
int countDifferent(const std::vector<int>& labels);

}  // namespace odb_detail
