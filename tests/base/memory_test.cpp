#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "base/give_back.h"
#include "base/unfilled.h"

namespace base {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(GiveBack, LeavesNoRoom) {
  std::vector<int> list(1000, 7);
  giveBack(list);
  EXPECT_THAT(list, IsEmpty());
  EXPECT_EQ(list.capacity(), 0U);
}

TEST(UnfilledVector, LeavesNewElementsAsTheyAreInMemory) {
  UnfilledVector<int> list(1000, 7);
  list.resize(10);
  list.resize(1000);
  EXPECT_THAT(list, Each(7));
}

TEST(UnfilledVector, IsAVectorOtherwise) {
  UnfilledVector<int> list = {1, 2};
  list.push_back(3);
  list.resize(4, 4);
  EXPECT_THAT(list, ElementsAre(1, 2, 3, 4));
}

}  // namespace
}  // namespace base
