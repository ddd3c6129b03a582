#include "traversal/process_frame.h"
#include "walk_test.h"

namespace {

using testing::ElementsAre;

// A field whose every region holds one scalar, so that each visit of the dispatch leaves records.
memory::Field visibleField(const std::string& name, const std::vector<std::string>& sets) {
  memory::Field field;
  field.name = name;
  field.blocks = {nodeBlock(odb_Enum::scalar, 1, {1})};
  for (const std::string& set : sets) {
    memory::Field subset;
    subset.values = {scalarValue(2)};
    field.subsets[set] = subset;
  }
  return field;
}

class FramesTest : public WalkTest {
 protected:
  FramesTest() {
    switches().field = switches().allFieldOutputs = true;
    database_.assembly = {"ASSEMBLY", {"Top", "Edge-1"}, {"Tip"}};
    database_.instances = {{"PART-1-1", {"Set-1"}, {"N"}}, {"B", {}, {"N"}}};
    database_.parts = {{"PART-1", {"Set-1"}, {}}};
    frame_.increment = 12;
    frame_.description = "Increment 12";
    frame_.fields = {visibleField("V", {"Top", "Edge-1", "Tip", "Set-1", "N"}),
                     visibleField("NT", {"Top", "Edge-1", "Tip", "Set-1", "N"})};
  }

  void walk(int depth = 9998) {
    processFrame(odb_Odb(database_), odb_Frame(frame_), out_, "Step-1", "        ", depth);
  }

  memory::Database database_;
  memory::Frame frame_;
};

TEST_F(FramesTest, AnEmptyDescriptionIsAnnouncedAsSuch) {
  frame_.description = "";
  walk();
  EXPECT_EQ(console(), "Processing Frame: \n");
}

TEST_F(FramesTest, ADepthOfZeroAnnouncesAndWritesNothing) {
  walk(0);
  EXPECT_EQ(console(), "Processing Frame: Increment 12\n");
  EXPECT_EQ(records(), "");
  walk(-5);
  EXPECT_EQ(records(), "");
}

TEST_F(FramesTest, WithoutSetsEachFieldIsReducedOverTheWholeModelByName) {
  walk();
  EXPECT_THAT(takeNames("Step_1__Frame_12__"), ElementsAre("NT__max", "NT__min", "V__max", "V__min"));
}

TEST_F(FramesTest, EachFieldGoesThroughAllRegionsInTheirOrderBeforeTheNextBegins) {
  switches().fieldSets = true;
  walk();
  const std::vector<std::string> names = takeNames("Step_1__Frame_12__");
  std::vector<std::string> maxima;
  for (const std::string& name : names) {
    if (name.ends_with("__max")) maxima.push_back(name.substr(0, name.size() - 5));
  }
  EXPECT_THAT(maxima, ElementsAre("NT", "Edge_1__NT", "Top__NT", "Tip__NT", "B_N__NT", "PART_1_1_Set_1__NT",
                                  "PART_1_1_N__NT", "PART_1_Set_1__NT", "V", "Edge_1__V", "Top__V", "Tip__V", "B_N__V",
                                  "PART_1_1_Set_1__V", "PART_1_1_N__V", "PART_1_Set_1__V"));
}

TEST_F(FramesTest, InvariantsAloneOpenTheSetRegionsToo) {
  switches().tensorInvariants = true;
  walk();
  EXPECT_NE(records().find("Step_1__Frame_12__Top__NT__max\t2\n"), std::string::npos);
}

TEST_F(FramesTest, AModelWithoutSetsIsVisitedOncePerField) {
  database_.assembly = {"ASSEMBLY", {}, {}};
  database_.instances = {{"I", {}, {}}};
  database_.parts.clear();
  switches().fieldSets = switches().tensorInvariants = true;
  walk();
  EXPECT_THAT(takeNames("Step_1__Frame_12__"), ElementsAre("NT__max", "NT__min", "V__max", "V__min"));
}

TEST_F(FramesTest, ASetWithoutValuesIsVisitedAndWritesNothing) {
  frame_.fields = {visibleField("NT", {})};
  switches().fieldSets = true;
  walk();
  EXPECT_THAT(takeNames("Step_1__Frame_12__"), ElementsAre("NT__max", "NT__min"));
}

TEST_F(FramesTest, NegativeIncrementsAreWrittenAsTheyAre) {
  frame_.increment = -1;
  walk();
  EXPECT_NE(records().find("Step_1__Frame_-1__NT__max\t1\n"), std::string::npos);
}

}  // namespace
