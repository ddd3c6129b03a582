#include "reduce/write_bulk_field_records.h"
#include "walk_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BulkRecordsTest : public WalkTest {
 protected:
  void write(const std::vector<memory::Block>& blocks, const char* scope = "ALL", const char* region = "") {
    odb_SequenceFieldBulkData sequence;
    for (const memory::Block& block : blocks) sequence.append(odb_FieldBulkData(block));
    writeBulkFieldRecords(sequence, out_, "Step-1", 3, scope, region, "F", {}, "", false);
  }
  std::vector<std::string> linesOf(const std::string& head) {
    std::vector<std::string> lines = takeLines();
    for (std::string& line : lines) {
      EXPECT_EQ(line.substr(0, head.size()), head);
      line = line.substr(head.size());
    }
    return lines;
  }
};

memory::Block stressBlock(std::vector<std::string> labels, const std::vector<float>& row, float mises) {
  memory::Block block = elementBlock(odb_Enum::tensor3dFull, static_cast<int>(row.size()), row, {mises});
  block.labels = std::move(labels);
  return block;
}

TEST_F(BulkRecordsTest, AVectorOverARegionHasItsEngineeringMinimaUnderThePlainNames) {
  switches().fieldComponents = switches().engineeringMin = true;
  const std::vector<memory::Block> blocks = {nodeBlock(odb_Enum::vector, 3, {1, 2, 2})};
  write(blocks, "NODE_SET", "__REGION-A");
  EXPECT_THAT(linesOf("Step_1__Frame_3__REGION_A__F__"),
              ElementsAre("mag__max\t3", "mag__min\t3", "mag__enggmin\t3", "1__max\t1", "1__min\t1", "2__max\t2",
                          "2__min\t2", "3__max\t2", "3__min\t2", "1__min\t1", "2__min\t2", "3__min\t2"));
  write(blocks);
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"),
              ElementsAre("mag__max\t3", "mag__min\t3", "mag__enggmin\t3", "1__max\t1", "1__min\t1", "2__max\t2",
                          "2__min\t2", "3__max\t2", "3__min\t2", "1__enggmin\t1", "2__enggmin\t2", "3__enggmin\t2"));
}

TEST_F(BulkRecordsTest, AFieldWithoutBlocksWritesTheStartingValuesOfAScalar) {
  switches().engineeringMax = true;
  write({});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"),
              ElementsAre("max\t-1.79769e+308", "min\t1.79769e+308", "enggmax\t-1.79769e+308"));
}

TEST_F(BulkRecordsTest, AFieldWithoutValuesOverARegionWritesNothing) {
  write({}, "NODE_SET", "__R");
  EXPECT_THAT(takeLines(), IsEmpty());
}

TEST_F(BulkRecordsTest, ABlockWithoutRowsWritesTheStartingValuesOfItsPrecision) {
  write({nodeBlock(odb_Enum::scalar, 1, {})});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"), ElementsAre("max\t-3.40282e+038", "min\t3.40282e+038"));
}

TEST_F(BulkRecordsTest, ElementVectorsReportTheStartingValuesAsEngineeringExtremes) {
  switches().engineeringMax = switches().engineeringMin = true;
  write({elementBlock(odb_Enum::vector, 3, {3, 4, 0})});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"),
              ElementsAre("mag__max\t5", "mag__min\t5", "mag__enggmax\t-3.40282e+038", "mag__enggmin\t3.40282e+038"));
}

TEST_F(BulkRecordsTest, KeysOfATensorComeInTheirOrder) {
  switches().fieldComponents = switches().engineeringMax = true;
  write({stressBlock({"11", "22"}, {1, 2}, 7)});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"),
              ElementsAre("mises__max\t7", "mises__min\t7", "mises__enggmax\t7", "11__max\t1", "11__min\t1",
                          "11__enggmax\t1", "22__max\t2", "22__min\t2", "22__enggmax\t2"));
}

TEST_F(BulkRecordsTest, AComponentPresentInAnyTensorBlockIsReported) {
  switches().fieldComponents = true;
  write({stressBlock({"11", "22", "33", "12"}, {1, 2, 3, 4}, 7), stressBlock(kSixLabels, {9, 8, 7, 6, 5, 4}, 6)});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"),
              ElementsAre("mises__max\t7", "mises__min\t6", "11__max\t9", "11__min\t9", "22__max\t8", "22__min\t8",
                          "33__max\t7", "33__min\t7", "12__max\t6", "12__min\t6", "13__max\t5", "13__min\t5",
                          "23__max\t4", "23__min\t4"));
}

TEST_F(BulkRecordsTest, AComponentThatTheLastBlockLacksIsReportedAsResetByIt) {
  switches().fieldComponents = switches().engineeringMax = true;
  write({stressBlock({"11", "12"}, {1, 0, 0, 4}, 7), stressBlock({"11"}, {2}, 6)});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"),
              ElementsAre("mises__max\t7", "mises__min\t6", "mises__enggmax\t7", "11__max\t2", "11__min\t2",
                          "11__enggmax\t2", "12__max\t-1.79769e+308", "12__min\t1.79769e+308", "12__enggmax\t4"));
}

TEST_F(BulkRecordsTest, EngineeringExtremesCombineLikePlainOnes) {
  switches().engineeringMax = true;
  switches().percentage = 70;
  // The second largest of (9, 5, 4) and of (8, 7, 6): k = 2 of 3 values each.
  write({elementBlock(odb_Enum::scalar, 1, {9, 5, 4}), elementBlock(odb_Enum::scalar, 1, {8, 7, 6})});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"), ElementsAre("max\t9", "min\t4", "enggmax\t7"));
}

TEST_F(BulkRecordsTest, VectorComponentsGatherOverTheBlocksOfOneFieldAndStartAnewWithTheNext) {
  switches().fieldComponents = true;
  write({nodeBlock(odb_Enum::vector, 1, {1}), nodeBlock(odb_Enum::vector, 1, {-5})});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"), testing::IsSupersetOf({"1__max\t1", "1__min\t-5"}));
  write({nodeBlock(odb_Enum::vector, 1, {2})});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"), testing::IsSupersetOf({"1__max\t2", "1__min\t2"}));
}

TEST_F(BulkRecordsTest, NodeTensorsReportTheComponentsThatAnEarlierFieldLeft) {
  switches().fieldComponents = true;
  write({stressBlock({"11"}, {42}, 7)});
  takeLines();
  memory::Block block = nodeBlock(odb_Enum::tensor3dFull, 1, {1});
  block.labels = {"11"};
  write({block});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"),
              ElementsAre("mises__max\t1", "mises__min\t1", "11__max\t42", "11__min\t42"));
}

TEST_F(BulkRecordsTest, AtTheStartOfTheProcessTheComponentsOfNodeTensorsAreZero) {
  switches().fieldComponents = true;
  memory::Block block = nodeBlock(odb_Enum::tensor3dFull, 1, {1});
  block.labels = {"23"};
  write({block});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"),
              ElementsAre("mises__max\t1", "mises__min\t1", "23__max\t0", "23__min\t0"));
}

TEST_F(BulkRecordsTest, TheTypeOfTheLastBlockDecidesTheFamily) {
  write({nodeBlock(odb_Enum::vector, 1, {1}), nodeBlock(odb_Enum::scalar, 1, {5})});
  EXPECT_THAT(linesOf("Step_1__Frame_3__F__"), ElementsAre("max\t5", "min\t1"));
}

}  // namespace
