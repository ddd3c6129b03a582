#include "odbstore/frame_slabs.h"

#include <gmock/gmock.h>

#include <vector>

namespace odbstore {
namespace {

using testing::ElementsAre;

TEST(FrameSlabsTest, WithoutAListSlabsAreFrames) {
  const FrameSlabs slabs(3);
  EXPECT_EQ(slabs.count(), 3);
  EXPECT_EQ(slabs.slabOf(0), 0);
  EXPECT_EQ(slabs.slabOf(2), 2);
  EXPECT_EQ(slabs.slabOf(3), -1);
  EXPECT_THAT(slabs.frames(), ElementsAre(0, 1, 2));
}

TEST(FrameSlabsTest, AListSaysWhichFrameASlabHolds) {
  const FrameSlabs slabs(std::vector<std::int32_t>{4, 0, 9});
  EXPECT_EQ(slabs.count(), 3);
  EXPECT_EQ(slabs.slabOf(4), 0);
  EXPECT_EQ(slabs.slabOf(0), 1);
  EXPECT_EQ(slabs.slabOf(9), 2);
  for (const int frame : {1, 3, 5, 8, 10}) EXPECT_EQ(slabs.slabOf(frame), -1) << frame;
  EXPECT_THAT(slabs.frames(), ElementsAre(4, 0, 9));
}

TEST(FrameSlabsTest, AnEmptyListHoldsNoFrame) {
  const FrameSlabs slabs(std::vector<std::int32_t>{});
  EXPECT_EQ(slabs.slabOf(0), -1);
  EXPECT_TRUE(slabs.frames().empty());
}

}  // namespace
}  // namespace odbstore
