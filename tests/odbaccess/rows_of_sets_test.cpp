#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <set>

#include "odbaccess/block_storage.h"

using odb_detail::LabelIndex;
using odb_detail::RowSelection;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<int> rowsOf(const RowSelection& selection) {
  std::vector<int> rows;
  for (int i = 0; i < selection.size(); ++i) rows.push_back(selection[i]);
  return rows;
}

// The rows whose label is wanted, one by one.
std::vector<int> rowsByLooking(const std::vector<int>& labels, const std::vector<int>& wanted) {
  std::vector<int> rows;
  for (std::size_t row = 0; row < labels.size(); ++row) {
    if (std::count(wanted.begin(), wanted.end(), labels[row]) > 0) rows.push_back(static_cast<int>(row));
  }
  return rows;
}

}  // namespace

TEST(LabelIndexTest, FindsAllRowsOfLabelsInTheirOrder) {
  const LabelIndex index({7, 3, 3, 9, 7, 1});
  EXPECT_THAT(index.rowsOf({3, 7}), ElementsAre(0, 1, 2, 4));
  EXPECT_THAT(index.rowsOf({0, 2, 9, 10}), ElementsAre(3));
  EXPECT_THAT(index.rowsOf({}), IsEmpty());
  EXPECT_THAT(LabelIndex({}).rowsOf({1}), IsEmpty());
}

TEST(LabelIndexTest, FindsWhatLookingAtEveryRowFinds) {
  std::mt19937 random(1);
  for (int number = 0; number < 2000; ++number) {
    const int range = 1 + static_cast<int>(random() % 100);
    const auto oneOf = [&] { return static_cast<int>(random() % static_cast<unsigned>(range)) - 5; };
    std::vector<int> labels(random() % 60);
    std::generate(labels.begin(), labels.end(), oneOf);
    if (number % 2 == 0) std::sort(labels.begin(), labels.end());
    std::set<int> wanted;
    for (auto i = random() % 60; i > 0; --i) wanted.insert(oneOf());
    const std::vector<int> sorted(wanted.begin(), wanted.end());
    EXPECT_EQ(LabelIndex(labels).rowsOf(sorted), rowsByLooking(labels, sorted)) << number;
  }
}

TEST(RowSelectionTest, KeepsRowsOnlyWhereTheyAreScattered) {
  const RowSelection scattered({2, 3, 5});
  EXPECT_THAT(rowsOf(scattered), ElementsAre(2, 3, 5));
  EXPECT_EQ(scattered.kept(), 3U);
  const RowSelection stretch({4, 5, 6});
  EXPECT_THAT(rowsOf(stretch), ElementsAre(4, 5, 6));
  EXPECT_EQ(stretch.kept(), 0U);
  EXPECT_THAT(rowsOf(RowSelection({8})), ElementsAre(8));
  EXPECT_THAT(rowsOf(RowSelection(std::vector<int>())), IsEmpty());
}
