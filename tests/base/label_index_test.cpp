#include "base/label_index.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace base {
namespace {

TEST(LabelIndex, OfNothingFindsNothing) {
  const LabelIndex none;
  EXPECT_TRUE(none.isEmpty());
  EXPECT_FALSE(none.contains(0));
  EXPECT_TRUE(LabelIndex(std::vector<int>{}).isEmpty());
}

TEST(LabelIndex, FindsPlacesOfUnsortedLabels) {
  const LabelIndex index(std::vector{30, 10, 20});
  EXPECT_EQ(index.placeOf(30), 0);
  EXPECT_EQ(index.placeOf(10), 1);
  EXPECT_EQ(index.placeOf(20), 2);
  EXPECT_EQ(index.placeOf(9), -1);
  EXPECT_EQ(index.placeOf(31), -1);
  EXPECT_EQ(index.placeOf(11), -1);
  EXPECT_FALSE(index.isEmpty());
  EXPECT_FALSE(index.repeated());
}

TEST(LabelIndex, FindsPlacesOfLabelsFarApart) {
  const int least = std::numeric_limits<int>::min();
  const int greatest = std::numeric_limits<int>::max();
  const LabelIndex index(std::vector{greatest, 5, least, 1000000000});
  EXPECT_EQ(index.placeOf(greatest), 0);
  EXPECT_EQ(index.placeOf(5), 1);
  EXPECT_EQ(index.placeOf(least), 2);
  EXPECT_EQ(index.placeOf(1000000000), 3);
  EXPECT_EQ(index.placeOf(0), -1);
  EXPECT_EQ(index.placeOf(greatest - 1), -1);
}

TEST(LabelIndex, KeepsTheFirstPlaceOfALabelThatComesTwiceAndNamesIt) {
  for (const int far : {4, 2000000000}) {
    const LabelIndex index(std::vector{7, far, 7});
    EXPECT_EQ(index.placeOf(7), 0);
    EXPECT_EQ(index.placeOf(far), 1);
    EXPECT_EQ(index.repeated(), 7);
  }
}

}  // namespace
}  // namespace base
