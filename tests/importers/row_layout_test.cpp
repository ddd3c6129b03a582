// Rows that are told to be good by one like them.
#include "importers/calculix/dat/row_layout.h"

#include <gmock/gmock.h>

namespace importers::calculix {
namespace {

using testing::ElementsAre;

constexpr const char* kRow = "         1   8  1.234567E+00 -2.345678E-12  0.000000E+00 OR1";

class RowLayoutTest : public testing::Test {
 protected:
  RowLayoutTest() { layout_.learn(kRow, 2); }

  bool fits(const std::string& row) { return layout_.fits(row, labels_); }

  RowLayout layout_;
  std::array<int, 2> labels_{};
};

TEST_F(RowLayoutTest, LabelsDigitsAndSignsMayDiffer) {
  EXPECT_TRUE(fits("    120045  12 -9.999999E-01  2.345678E+12 -0.000000E+00 OR1"));
  EXPECT_THAT(labels_, ElementsAre(120045, 12));
}

TEST_F(RowLayoutTest, WhatElseDiffersIsLookedAtMoreClosely) {
  const std::string row = kRow;
  const std::pair<std::size_t, char> changes[] = {{9, 'x'},  {7, '1'},  {9, ' '},  {16, ','}, {17, 'x'}, {24, ' '},
                                                  {15, '*'}, {28, '-'}, {14, '-'}, {24, 'F'}, {25, ' '}, {39, ' '}};
  for (const auto& [place, c] : changes) {
    std::string changed = row;
    changed[place] = c;
    EXPECT_FALSE(fits(changed)) << changed;
  }
  EXPECT_FALSE(fits(row + " "));
  EXPECT_FALSE(fits(row.substr(0, row.size() - 1)));
  EXPECT_FALSE(fits("         1   8  1.234567E+00 -2.345678-123  0.000000E+00 OR1")) << "its exponent has no letter";
  EXPECT_FALSE(fits("         1   8  1.234567E+00           NaN  0.000000E+00 OR1"));
}

TEST_F(RowLayoutTest, NothingFitsBeforeARowIsLearnt) {
  layout_.forget();
  EXPECT_FALSE(fits(kRow));
  EXPECT_FALSE(RowLayout().fits("", labels_));
}

}  // namespace
}  // namespace importers::calculix
