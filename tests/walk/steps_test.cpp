#include "traversal/process_step.h"
#include "traversal/traverse_steps.h"
#include "walk_test.h"

namespace {

class StepsTest : public WalkTest {
 protected:
  void walk() { traverseSteps(odb_Odb(database_), nullptr, out_); }

  memory::Step& addStep(const std::string& name) {
    database_.steps.push_back({});
    database_.steps.back().name = name;
    return database_.steps.back();
  }

  memory::Database database_;
};

TEST_F(StepsTest, ADatabaseWithoutStepsWritesAndPrintsNothing) {
  switches().mass = switches().field = switches().history = true;
  walk();
  EXPECT_EQ(console(), "");
  EXPECT_EQ(records(), "");
}

TEST_F(StepsTest, TheSectorDefinitionIsReadAndDiscarded) {
  walk();
  EXPECT_EQ(database_.sectorReads, 0);
  database_.hasSector = true;
  walk();
  EXPECT_EQ(database_.sectorReads, 1);
  EXPECT_EQ(records(), "");
}

TEST_F(StepsTest, StepsComeInTheOrderOfTheDatabase) {
  addStep("Step-2");
  addStep("Step-1");
  walk();
  EXPECT_EQ(console(), "Processing Step: Step-2\nProcessing Step: Step-1\n");
}

TEST_F(StepsTest, MassRecordsAreWrittenInTheirForm) {
  memory::Step& step = addStep("Step-1");
  step.mass = 2.5;
  step.massCenter = {0, 1.5, 3};
  step.inertiaAboutCenter = {1, 2, 3, 0.1, 0.2, 1e-7};
  switches().mass = true;
  walk();
  EXPECT_EQ(console(), "Processing Step: Step-1\nExtracting mass properties\n");
  EXPECT_EQ(records(),
            "Step_1__Mass\t2.5\n"
            "Step_1__MassCenter\t(0, 1.5, 3)\n"
            "Step_1__InertiaCenter\t(1, 2, 3, 0.1, 0.2, 1e-007)\n");
}

TEST_F(StepsTest, WithoutComputingValuesTheNumbersBecomeZeroAndTheShapeStays) {
  memory::Step& step = addStep("Step-1");
  step.mass = 2.5;
  step.massCenter = {0, 1.5, 3};
  step.inertiaAboutOrigin = {1, 2, 3, 4, 5, 6};
  switches().mass = true;
  switches().computeValues = false;
  walk();
  EXPECT_EQ(records(), "Step_1__Mass\t0\nStep_1__MassCenter\t(0, 0, 0)\nStep_1__InertiaOrigin\t(0, 0, 0, 0, 0, 0)\n");
}

TEST_F(StepsTest, AStepWithoutMassInformationAnnouncesTheExtractionAndWritesNothing) {
  memory::Step& step = addStep("Step-1");
  step.massCenter = {1, 2, 3};
  switches().mass = true;
  walk();
  EXPECT_EQ(console(), "Processing Step: Step-1\nExtracting mass properties\n");
  EXPECT_EQ(records(), "");
}

TEST_F(StepsTest, OnlyHyphensAreReplacedInMassRecordsAndNoneInTheNamePassedOn) {
  memory::Step& step = addStep("A-b-c d");
  step.mass = 1;
  step.histories.push_back({"r", "", -1, -1, 0, 0, "", {{"H", {{0, 1}}}}});
  switches().mass = switches().history = true;
  walk();
  EXPECT_EQ(records(), "A_b_c d__Mass\t1\nA_b_c_d__History__H\t((0, 1))\n");
}

TEST_F(StepsTest, HistoryExtremesAloneVisitTheRegions) {
  addStep("S").histories.push_back({"r", "tip", -1, -1, 0, 0, "", {{"H", {{0, 1}}}}});
  switches().historyExtremes = true;
  walk();
  EXPECT_EQ(console(), "Processing Step: S\nProcessing History Region: tip\n");
  EXPECT_EQ(records(), "S__History_Max__H\t1\nS__History_Min__H\t1\n");
}

TEST_F(StepsTest, RegionsComeByNameAndBeforeTheFrames) {
  memory::Step& step = addStep("S");
  step.frames.push_back({1, "f1", {}});
  step.frames.push_back({2, "f2", {}});
  step.histories.push_back({"b", "second", -1, -1, 0, 0, "", {}});
  step.histories.push_back({"a", "first", -1, -1, 0, 0, "", {}});
  switches().history = switches().field = true;
  walk();
  EXPECT_EQ(console(),
            "Processing Step: S\nProcessing History Region: first\nProcessing History Region: second\n"
            "Processing Frame: f1\nProcessing Frame: f2\n");
}

TEST_F(StepsTest, WithoutFieldExtractionFramesAreNotVisited) {
  addStep("S").frames.push_back({1, "f1", {}});
  switches().fieldSets = switches().allFieldOutputs = switches().tensorInvariants = true;
  walk();
  EXPECT_EQ(console(), "Processing Step: S\n");
}

TEST_F(StepsTest, WithFieldExtractionAloneOnlyFramesAreVisited) {
  memory::Step& step = addStep("S");
  step.frames.push_back({1, "f1", {}});
  step.histories.push_back({"a", "first", -1, -1, 0, 0, "", {}});
  switches().field = true;
  walk();
  EXPECT_EQ(console(), "Processing Step: S\nProcessing Frame: f1\n");
}

TEST_F(StepsTest, ADepthBelowOneWritesTheMassAndStops) {
  memory::Step& step = addStep("S");
  step.mass = 3;
  step.frames.push_back({1, "f1", {}});
  switches().mass = switches().field = true;
  const odb_Odb odb(database_);
  processStep(odb, odb_Step(step), out_, "    ", 0);
  EXPECT_EQ(records(), "S__Mass\t3\n");
  EXPECT_EQ(console(), "Processing Step: S\nExtracting mass properties\n");
}

}  // namespace
