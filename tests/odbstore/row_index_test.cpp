#include "odbwriter/row_index.h"

#include <gmock/gmock.h>

#include <random>

namespace odbstore {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(RowIndexTest, StoredRowsAreNumberedInTheOrderOfTheirFirstUse) {
  const RowIndex index = makeRowIndex(std::vector{7, 2, 7, 0, 2, 7}, 9);
  EXPECT_THAT(index.rowOf, ElementsAre(0, 1, 0, 2, 1, 0));
  EXPECT_THAT(index.source, ElementsAre(7, 2, 0));
  EXPECT_EQ(index.storedRows(), 3);
}

TEST(RowIndexTest, NothingHasAnEmptyIndex) {
  const RowIndex index = makeRowIndex({}, 3);
  EXPECT_THAT(index.rowOf, IsEmpty());
  EXPECT_THAT(index.source, IsEmpty());
}

TEST(RowIndexTest, LeadsEveryRowToItsSource) {
  std::mt19937 random(3);
  for (int run = 0; run < 50; ++run) {
    const int count = 1 + static_cast<int>(random() % 40);
    std::vector<int> sources(random() % 100);
    for (int& source : sources) source = static_cast<int>(random() % static_cast<unsigned>(count));
    const RowIndex index = makeRowIndex(sources, count);
    ASSERT_EQ(index.rowOf.size(), sources.size());
    for (std::size_t i = 0; i < sources.size(); ++i) {
      EXPECT_EQ(index.source[static_cast<std::size_t>(index.rowOf[i])], sources[i]);
    }
  }
}

TEST(RowIndexTest, IsWorthwhileWhereItSavesAQuarter) {
  EXPECT_TRUE(isIndexWorthwhile(8, 6));
  EXPECT_FALSE(isIndexWorthwhile(8, 7));
  EXPECT_TRUE(isIndexWorthwhile(1728000, 226981));
}

}  // namespace
}  // namespace odbstore
