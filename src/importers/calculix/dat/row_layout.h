// Tells rows of a printed table that are laid out like one before, in a fraction of the time that taking them apart
// needs.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace importers::calculix {

// Numbers of a table stand in columns of fixed width, so of a row that is good only labels, digits and signs differ
// from another good one. A row that is laid out in another way need not be damaged: it has to be taken apart.
class RowLayout {
 public:
  // Rows are compared with this one, which is good and begins with so many labels.
  void learn(std::string_view row, std::size_t labels);
  void forget() { row_.clear(); }

  // Whether a row differs from the one learnt in labels, digits and signs alone; `labels` are its own then. False
  // before a row was learnt.
  bool fits(std::string_view row, std::array<int, 2>& labels) const;

 private:
  std::string row_;
  std::size_t labelCount_ = 0;
  std::array<std::size_t, 2> labelEnds_{};
};

}  // namespace importers::calculix
