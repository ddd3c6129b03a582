#include "importers/calculix/dat/row_layout.h"

#include <algorithm>

#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The characters that may take the place of a character of the learnt row, given the one before.
bool isAlike(char before, char known, char c) {
  if (isDigit(known)) return isDigit(c);
  if (before == 'E' && (known == '+' || known == '-')) return c == '+' || c == '-';
  if (known == ' ' || known == '-') return c == ' ' || c == '-';
  return c == known;
}

}  // namespace

void RowLayout::learn(std::string_view row, std::size_t labels) {
  row_ = row;
  labelCount_ = std::min(labels, labelEnds_.size());
  std::size_t at = 0;
  for (std::size_t i = 0; i < labelCount_; ++i) {
    at = std::min(row.find_first_not_of(" \t", at), row.size());
    at = std::min(row.find_first_of(" \t", at), row.size());
    labelEnds_[i] = at;
  }
}

bool RowLayout::fits(std::string_view row, std::array<int, 2>& labels) const {
  if (row_.empty() || row.size() != row_.size()) return false;
  std::size_t at = 0;
  for (std::size_t i = 0; i < labelCount_; ++i) {
    const auto label = integerFrom(row.substr(at, labelEnds_[i] - at));
    if (!label) return false;
    labels[i] = *label;
    at = labelEnds_[i];
  }
  // Two signs, or a sign in the middle of blanks, make no number.
  for (bool isSign = false; at < row.size(); ++at) {
    const char before = at > 0 ? row_[at - 1] : ' ';
    if (!isAlike(before, row_[at], row[at]) || (isSign && !isDigit(row[at]))) return false;
    isSign = row[at] == '-';
  }
  return true;
}

}  // namespace importers::calculix
