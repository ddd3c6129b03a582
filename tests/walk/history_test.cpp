#include "history/process_history_region.h"
#include "history/write_history_output.h"
#include "walk_test.h"

namespace {

class HistoryTest : public WalkTest {
 protected:
  HistoryTest() { switches().history = true; }

  void walk(const memory::HistoryRegion& region, int depth = 9998) {
    processHistoryRegion(odb_HistoryRegion(region), out_, "Step-1", "        ", depth);
  }
  std::string labelOf(memory::HistoryRegion region) {
    region.outputs = {{"H", {}}};
    walk(region);
    const std::vector<std::string> lines = takeLines();
    const std::string head = "Step_1__History__H";
    return lines.at(0).substr(head.size(), lines[0].find('\t') - head.size());
  }
  void write(const char* name, const std::vector<std::vector<float>>& samples, const char* label = "") {
    writeHistoryOutput(odb_HistoryOutput(name, samples), out_, "Step-1 a", label, "");
  }
};

TEST_F(HistoryTest, APointWithoutAnythingHasNoLabel) { EXPECT_EQ(labelOf({}), ""); }

TEST_F(HistoryTest, TheLastMemberPresentIsTheLabel) {
  memory::HistoryRegion region;
  region.node = 0;
  EXPECT_EQ(labelOf(region), "_0");
  region.element = 12;
  EXPECT_EQ(labelOf(region), "_12");
  region.integrationPoint = 4;
  EXPECT_EQ(labelOf(region), "_4");
  region.sectionPoint = 3;
  EXPECT_EQ(labelOf(region), "_3");
  region.set = "TIP NODES-1";
  EXPECT_EQ(labelOf(region), "_TIP NODES-1");
}

TEST_F(HistoryTest, ThresholdsOfPresenceDiffer) {
  memory::HistoryRegion region;
  region.node = 7;
  region.integrationPoint = -1;
  EXPECT_EQ(labelOf(region), "_-1");
  region.integrationPoint = 0;
  region.sectionPoint = -2;
  EXPECT_EQ(labelOf(region), "_7");
  region.node = -2;
  EXPECT_EQ(labelOf(region), "");
}

TEST_F(HistoryTest, ASetOutranksTheNode) {
  memory::HistoryRegion region;
  region.node = 7;
  region.set = "TIP";
  EXPECT_EQ(labelOf(region), "_TIP");
}

TEST_F(HistoryTest, ASectionPointOutranksTheElement) {
  memory::HistoryRegion region;
  region.element = 9;
  region.sectionPoint = 3;
  EXPECT_EQ(labelOf(region), "_3");
}

TEST_F(HistoryTest, ARegionWithoutOutputsIsAnnouncedAndWritesNothing) {
  memory::HistoryRegion region;
  region.description = "Output at the tip";
  walk(region);
  EXPECT_EQ(console(), "Processing History Region: Output at the tip\n");
  EXPECT_EQ(records(), "");
}

TEST_F(HistoryTest, ADepthOfZeroAnnouncesTheRegionAlone) {
  memory::HistoryRegion region;
  region.outputs = {{"H", {{0, 1}}}};
  walk(region, 0);
  EXPECT_EQ(console(), "Processing History Region: \n");
  EXPECT_EQ(records(), "");
}

TEST_F(HistoryTest, OutputsComeByName) {
  memory::HistoryRegion region;
  region.outputs = {{"U2", {}}, {"RF1", {}}, {"U10", {}}};
  walk(region);
  EXPECT_EQ(records(), "Step_1__History__RF1\tNone\nStep_1__History__U10\tNone\nStep_1__History__U2\tNone\n");
}

TEST_F(HistoryTest, SamplesAreWrittenAsPairs) {
  write("U2", {{0, 0}, {0.5F, 12.25F}}, "7");
  EXPECT_EQ(records(), "Step_1_a__History__U2_7\t((0, 0), (0.5, 12.25))\n");
}

TEST_F(HistoryTest, ExtremesAreOfTheLastNumberOfEachSample) {
  switches().historyExtremes = true;
  write("U2", {{100, -200, 1}, {-100, 200, 3}, {0, 0, 2}});
  EXPECT_EQ(records(),
            "Step_1_a__History__U2\t((100, -200, 1), (-100, 200, 3), (0, 0, 2))\n"
            "Step_1_a__History_Max__U2\t3\nStep_1_a__History_Min__U2\t1\n");
}

TEST_F(HistoryTest, NoSamplesWriteNoneAndNoExtremes) {
  switches().historyExtremes = true;
  write("U2", {});
  EXPECT_EQ(records(), "Step_1_a__History__U2\tNone\n");
}

TEST_F(HistoryTest, NoSamplesWithTheExtremesAloneWriteNothing) {
  switches().history = false;
  switches().historyExtremes = true;
  write("U2", {});
  EXPECT_EQ(records(), "");
}

TEST_F(HistoryTest, EmptySamplesWriteEmptyParenthesesAndReversedStartingExtremes) {
  switches().historyExtremes = true;
  write("U2", {{}, {}, {}});
  EXPECT_EQ(records(),
            "Step_1_a__History__U2\t((), (), ())\n"
            "Step_1_a__History_Max__U2\t-3.40282e+038\nStep_1_a__History_Min__U2\t3.40282e+038\n");
}

TEST_F(HistoryTest, WithoutComputingValuesEveryNumberIsZero) {
  switches().historyExtremes = true;
  switches().computeValues = false;
  write("U2", {{1, 2}, {3}});
  EXPECT_EQ(records(),
            "Step_1_a__History__U2\t((0, 0), (0))\nStep_1_a__History_Max__U2\t0\nStep_1_a__History_Min__U2\t0\n");
}

TEST_F(HistoryTest, LabelsKeepTheirBlanksAndDashesNamesDoNot) {
  write("RF1 - total", {{1}}, "TIP NODES-1");
  EXPECT_EQ(records(), "Step_1_a__History__RF1___total_TIP NODES-1\t((1))\n");
}

TEST_F(HistoryTest, ExtremesAloneAreComputedWithoutTheSamplesRecord) {
  switches().history = false;
  switches().historyExtremes = true;
  write("U2", {{0, -4}, {1, 5}});
  EXPECT_EQ(records(), "Step_1_a__History_Max__U2\t5\nStep_1_a__History_Min__U2\t-4\n");
}

}  // namespace
