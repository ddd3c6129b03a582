#include <cmath>
#include <limits>

#include "reduce/reduce_bulk_block.h"
#include "support/selection_oracle.h"
#include "walk_test.h"

namespace {

constexpr double kLowestFloat = -3.4028234663852886e38;
constexpr double kHighestFloat = 3.4028234663852886e38;
constexpr double kLowestDouble = -1.7976931348623157e308;
constexpr double kHighestDouble = 1.7976931348623157e308;

class BulkBlockTest : public WalkTest {
 protected:
  const Extremes& reduce(const memory::Block& block) {
    reduceBulkBlock(odb_FieldBulkData(block), out_, "Step-1", 1, "F", {}, "", false);
    return reductionResults().block;
  }
  Extremes& vector(std::size_t c) { return reductionResults().vector[c]; }
  Extremes& tensor(std::size_t c) { return reductionResults().tensor[c]; }
};

std::vector<float> oneTo(int n) {
  std::vector<float> numbers;
  for (int i = 0; i < n; ++i) numbers.push_back(static_cast<float>((i * 7) % n + 1));
  return numbers;
}

memory::Block inDouble(memory::Block block) {
  block.doubles.assign(block.floats.begin(), block.floats.end());
  block.floats.clear();
  return block;
}

TEST_F(BulkBlockTest, NodeVectorsAreReducedByTheirMagnitude) {
  const Extremes& result = reduce(nodeBlock(odb_Enum::vector, 3, {3, 4, 0, 0, 0, 1}));
  EXPECT_EQ(result.max, 5.0);
  EXPECT_EQ(result.min, 1.0);
}

TEST_F(BulkBlockTest, MagnitudesAreSummedAndRootedInSinglePrecision) {
  // In float 4097^2 + 1 is 16785408, in double it is 16785410: the roots differ in the last place.
  const Extremes& result = reduce(nodeBlock(odb_Enum::vector, 2, {4097.0F, 1.0F}));
  const float sum = 4097.0F * 4097.0F + 1.0F;
  EXPECT_EQ(result.max, static_cast<double>(std::sqrt(sum)));
  const Extremes& wide = reduce(inDouble(nodeBlock(odb_Enum::vector, 2, {4097.0F, 1.0F})));
  EXPECT_EQ(wide.max, std::sqrt(4097.0 * 4097.0 + 1.0));
}

TEST_F(BulkBlockTest, NodeScalarsOfFloatsHaveTheirSecondSmallestAsBothEngineeringExtremes) {
  switches().engineeringMax = switches().engineeringMin = true;
  switches().percentage = 10;
  const Extremes& result = reduce(nodeBlock(odb_Enum::scalar, 1, oneTo(25)));
  EXPECT_EQ(result.max, 25.0);
  EXPECT_EQ(result.min, 1.0);
  EXPECT_EQ(result.engineeringMin, 2.0);
  EXPECT_EQ(result.engineeringMax, 2.0);
}

TEST_F(BulkBlockTest, NodeScalarsOfFloatsSelectAscendingTwiceOverTheSameArray) {
  switches().engineeringMax = switches().engineeringMin = true;
  switches().percentage = 20;
  constexpr int kPassed = 32;
  const std::vector<float> numbers = scrambledNumbers<float>(161, 71);
  const std::vector<float> once = selectedAscending(numbers, kPassed);
  const std::vector<float> twice = selectedAscending(once, kPassed);
  ASSERT_NE(once[kPassed - 1], twice[kPassed - 1]);
  const Extremes& result = reduce(nodeBlock(odb_Enum::scalar, 1, numbers));
  EXPECT_EQ(result.engineeringMin, static_cast<double>(once[kPassed - 1]));
  EXPECT_EQ(result.engineeringMax, static_cast<double>(twice[kPassed - 1]));
}

TEST_F(BulkBlockTest, NodeScalarsOfDoublesSelectTheMaximumFromAbove) {
  switches().engineeringMax = switches().engineeringMin = true;
  switches().percentage = 10;
  const Extremes& result = reduce(inDouble(nodeBlock(odb_Enum::scalar, 1, oneTo(25))));
  EXPECT_EQ(result.engineeringMin, 2.0);
  EXPECT_EQ(result.engineeringMax, 24.0);
}

TEST_F(BulkBlockTest, NodeVectorsOfFloatsSelectTheMaximumFromAbove) {
  switches().engineeringMax = switches().engineeringMin = switches().fieldComponents = true;
  switches().percentage = 10;
  const Extremes& result = reduce(nodeBlock(odb_Enum::vector, 1, oneTo(25)));
  EXPECT_EQ(result.engineeringMin, 2.0);
  EXPECT_EQ(result.engineeringMax, 24.0);
  EXPECT_EQ(vector(0).engineeringMin, 2.0);
  EXPECT_EQ(vector(0).engineeringMax, 24.0);
}

TEST_F(BulkBlockTest, NodeRowsOfSeveralNumbersKeepTheLastForTheEngineeringExtremes) {
  switches().engineeringMin = true;
  const Extremes& result = reduce(nodeBlock(odb_Enum::tensor2dPlanar, 3, {-5, 2, 3, 9, 1, 4}));
  EXPECT_EQ(result.max, 9.0);
  EXPECT_EQ(result.min, -5.0);
  EXPECT_EQ(result.engineeringMin, 3.0);
}

TEST_F(BulkBlockTest, NodeVectorComponentsGatherOverBlocks) {
  switches().fieldComponents = true;
  vector(0).resetPlain();
  reduce(nodeBlock(odb_Enum::vector, 3, {1, 0, 0}));
  reduce(nodeBlock(odb_Enum::vector, 3, {-7, 0, 0}));
  EXPECT_EQ(vector(0).max, 1.0);
  EXPECT_EQ(vector(0).min, -7.0);
}

TEST_F(BulkBlockTest, AMissingVectorComponentKeepsItsStartingValues) {
  switches().fieldComponents = switches().engineeringMax = switches().engineeringMin = true;
  vector(2).resetPlain();
  reduce(nodeBlock(odb_Enum::vector, 2, {3, 4}));
  EXPECT_EQ(vector(2).max, kLowestDouble);
  EXPECT_EQ(vector(2).engineeringMax, kLowestDouble);
  EXPECT_EQ(vector(2).engineeringMin, kHighestDouble);
  EXPECT_EQ(vector(1).engineeringMax, 4.0);
}

TEST_F(BulkBlockTest, AnyNodeBlockResetsTheEngineeringExtremesOfVectorComponents) {
  switches().fieldComponents = true;
  vector(1).engineeringMax = 42;
  reduce(nodeBlock(odb_Enum::scalar, 1, {1}));
  EXPECT_EQ(vector(1).engineeringMax, kLowestDouble);
}

TEST_F(BulkBlockTest, ElementVectorsReportTheStartingValuesAsEngineeringExtremes) {
  switches().engineeringMax = switches().engineeringMin = true;
  const Extremes& result = reduce(elementBlock(odb_Enum::vector, 3, {3, 4, 0}));
  EXPECT_EQ(result.max, 5.0);
  EXPECT_EQ(result.engineeringMax, kLowestFloat);
  EXPECT_EQ(result.engineeringMin, kHighestFloat);
}

TEST_F(BulkBlockTest, ElementVectorsLeaveTheEngineeringExtremesOfTheirComponentsFromBefore) {
  switches().fieldComponents = switches().engineeringMax = true;
  vector(0).engineeringMax = 42;
  reduce(elementBlock(odb_Enum::vector, 3, {3, 4, 0}));
  EXPECT_EQ(vector(0).max, 3.0);
  EXPECT_EQ(vector(0).engineeringMax, 42.0);
}

TEST_F(BulkBlockTest, ElementTensorsAreReducedByTheirEquivalentStress) {
  switches().engineeringMax = switches().engineeringMin = true;
  switches().percentage = 50;
  const Extremes& result = reduce(elementBlock(odb_Enum::tensor3dFull, 6, std::vector<float>(24, 1.0F), {4, 1, 3, 2}));
  EXPECT_EQ(result.max, 4.0);
  EXPECT_EQ(result.min, 1.0);
  EXPECT_EQ(result.engineeringMax, 3.0);
  EXPECT_EQ(result.engineeringMin, 2.0);
}

TEST_F(BulkBlockTest, ElementComponentsAreTheBlocksOwnAndAbsentOnesAreReset) {
  switches().fieldComponents = switches().engineeringMax = switches().engineeringMin = true;
  tensor(4) = {1, 2, 3, 4};
  vector(0) = {1, 2, 3, 4};
  memory::Block block = elementBlock(odb_Enum::tensor2dPlanar, 4, {1, 2, 3, 4, -1, -2, -3, -4}, {5, 6});
  block.labels = {"11", "22", "33", "12"};
  reduce(block);
  EXPECT_EQ(tensor(0).max, 1.0);
  EXPECT_EQ(tensor(3).min, -4.0);
  EXPECT_EQ(tensor(3).engineeringMin, -4.0);
  EXPECT_EQ(tensor(3).engineeringMax, 4.0);
  // Of a component that the block lacks the plain extremes start anew, the engineering ones stay from before.
  EXPECT_EQ(tensor(4).max, kLowestDouble);
  EXPECT_EQ(tensor(4).min, kHighestDouble);
  EXPECT_EQ(tensor(4).engineeringMax, 3.0);
  EXPECT_EQ(vector(0).max, kLowestDouble);
  EXPECT_EQ(vector(0).engineeringMax, 3.0);
}

TEST_F(BulkBlockTest, ALabelWithAPrefixNamesNoComponentHere) {
  switches().fieldComponents = true;
  memory::Block block = elementBlock(odb_Enum::tensor3dFull, 6, {1, 2, 3, 4, 5, 6}, {5});
  block.labels = {"S11", "S22", "S33", "S12", "S13", "S23"};
  reduce(block);
  EXPECT_EQ(tensor(0).max, kLowestDouble);
}

TEST_F(BulkBlockTest, NodeTensorsDoNotTouchTheirComponents) {
  switches().fieldComponents = true;
  tensor(0) = {1, 2, 3, 4};
  memory::Block block = nodeBlock(odb_Enum::tensor2dPlanar, 4, {10, 20, 30, 40});
  block.labels = {"11", "22", "33", "12"};
  reduce(block);
  EXPECT_EQ(tensor(0).max, 1.0);
  EXPECT_EQ(tensor(0).min, 2.0);
}

TEST_F(BulkBlockTest, ElementScalarsSelectFromBothEnds) {
  switches().engineeringMax = switches().engineeringMin = true;
  switches().percentage = 10;
  const Extremes& result = reduce(elementBlock(odb_Enum::scalar, 1, oneTo(25)));
  EXPECT_EQ(result.engineeringMin, 2.0);
  EXPECT_EQ(result.engineeringMax, 24.0);
}

TEST_F(BulkBlockTest, ElementScalarsOfSeveralColumnsKeepTheLastForTheEngineeringExtremes) {
  switches().engineeringMax = switches().engineeringMin = true;
  const Extremes& result = reduce(elementBlock(odb_Enum::scalar, 2, {9, 1, -5, 2}));
  EXPECT_EQ(result.max, 9.0);
  EXPECT_EQ(result.min, -5.0);
  EXPECT_EQ(result.engineeringMax, 2.0);
  EXPECT_EQ(result.engineeringMin, 1.0);
}

TEST_F(BulkBlockTest, ElementScalarsOfDoublesAreNotRoundedToFloats) {
  switches().engineeringMax = switches().engineeringMin = true;
  memory::Block block = elementBlock(odb_Enum::scalar, 1, {});
  block.doubles = {1.0 / 3.0, 2.0 / 3.0};
  const Extremes& result = reduce(block);
  EXPECT_EQ(result.max, 2.0 / 3.0);
  EXPECT_EQ(result.engineeringMax, 2.0 / 3.0);
  EXPECT_EQ(result.engineeringMin, 1.0 / 3.0);
}

TEST_F(BulkBlockTest, TheEquivalentStressOfDoublesStaysAFloat) {
  switches().engineeringMax = switches().engineeringMin = switches().fieldComponents = true;
  memory::Block block = elementBlock(odb_Enum::tensor3dFull, 1, {}, {0.1F, 0.2F});
  block.doubles = {1.0 / 3.0, 2.0 / 3.0};
  block.labels = {"11"};
  const Extremes& result = reduce(block);
  EXPECT_EQ(result.max, static_cast<double>(0.2F));
  EXPECT_EQ(result.engineeringMin, static_cast<double>(0.1F));
  EXPECT_EQ(tensor(0).max, 2.0 / 3.0);
  EXPECT_EQ(tensor(0).engineeringMin, 1.0 / 3.0);
}

TEST_F(BulkBlockTest, ElementVectorsOfDoublesReportTheDoubleStartingValues) {
  switches().engineeringMax = switches().engineeringMin = true;
  const Extremes& result = reduce(inDouble(elementBlock(odb_Enum::vector, 3, {3, 4, 0})));
  EXPECT_EQ(result.max, 5.0);
  EXPECT_EQ(result.engineeringMax, kLowestDouble);
  EXPECT_EQ(result.engineeringMin, kHighestDouble);
}

TEST_F(BulkBlockTest, NoRowsLeaveTheStartingValues) {
  switches().engineeringMax = switches().engineeringMin = true;
  const Extremes& result = reduce(nodeBlock(odb_Enum::scalar, 1, {}));
  EXPECT_EQ(result.max, kLowestFloat);
  EXPECT_EQ(result.min, kHighestFloat);
  EXPECT_EQ(result.engineeringMax, kLowestFloat);
  EXPECT_EQ(result.engineeringMin, kHighestFloat);
}

TEST_F(BulkBlockTest, NaNsReplaceNothing) {
  const Extremes& result = reduce(nodeBlock(odb_Enum::scalar, 1, {std::nanf(""), 2, std::nanf("")}));
  EXPECT_EQ(result.max, 2.0);
  EXPECT_EQ(result.min, 2.0);
}

TEST_F(BulkBlockTest, DoubleBlocksRunFromTheDoubleStartingValues) {
  memory::Block block = nodeBlock(odb_Enum::scalar, 1, {});
  block.doubles = {1e300, -1e300};
  const Extremes& result = reduce(block);
  EXPECT_EQ(result.max, 1e300);
  EXPECT_EQ(result.min, -1e300);
  EXPECT_EQ(result.engineeringMax, kLowestDouble);
}

}  // namespace
