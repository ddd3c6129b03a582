#include "reduce/process_field_output.h"
#include "walk_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DispatchTest : public WalkTest {
 protected:
  DispatchTest() {
    scalar_.name = "NT";
    scalar_.description = "Nodal temperature";
    scalar_.blocks = {nodeBlock(odb_Enum::scalar, 1, {1, 2})};
    scalar_.values = {scalarValue(5)};
    tensor_.name = "S";
    tensor_.description = "Stress components";
    tensor_.type = odb_Enum::tensor3dFull;
    tensor_.labels = kSixLabels;
    tensor_.invariants = {odb_Enum::maxPrincipal, odb_Enum::tresca, odb_Enum::inv3, odb_Enum::outOfPlanePrincipal};
    tensor_.blocks = {elementBlock(odb_Enum::tensor3dFull, 6, {1, 2, 3, 4, 5, 6}, {7})};
    tensor_.blocks[0].labels = kSixLabels;
    tensor_.values = {tensorValue(odb_Enum::tensor3dFull, {1, 2, 3, 4, 5, 6}, 7)};
    vector_.name = "U";
    vector_.description = "Spatial displacement";
    vector_.type = odb_Enum::vector;
    vector_.labels = {"1", "2"};
    vector_.blocks = {nodeBlock(odb_Enum::vector, 2, {3, 4})};
  }

  void dispatch(const memory::Field& field, const char* kind, const char* tag, int depth = 9997) {
    processFieldOutput(odb_FieldOutput(field), out_, "Step-1", 3, kind, tag, "            ", depth);
  }
  void dispatchWhole(const memory::Field& field) { dispatch(field, "ALL", ""); }
  void dispatchSet(const memory::Field& field) { dispatch(field, "ELEMENT_SET", "__TOP"); }

  memory::Field scalar_;
  memory::Field tensor_;
  memory::Field vector_;
};

TEST_F(DispatchTest, SetsOfWarningsAndInformationYieldNothingInBothModes) {
  switches().allFieldOutputs = true;
  for (const bool compute : {true, false}) {
    switches().computeValues = compute;
    for (const char* tag : {"__WarnElemDistorted", "__A_Info", "__xWarnx", "__InfoNodes"}) {
      dispatch(scalar_, "ELEMENT_SET", tag);
      EXPECT_THAT(takeLines(), IsEmpty()) << tag;
    }
    dispatch(scalar_, "ELEMENT_SET", "__information");
    EXPECT_EQ(takeLines().size(), 2U);
    dispatch(scalar_, "ELEMENT_SET", "__WARNING");
    EXPECT_EQ(takeLines().size(), 2U);
  }
}

TEST_F(DispatchTest, AFieldIsWantedByAWordOfItsDescription) {
  dispatchWhole(tensor_);
  EXPECT_THAT(takeLines(), IsEmpty());
  switches().stress = true;
  dispatchWhole(tensor_);
  EXPECT_EQ(takeLines().size(), 2U);
  dispatchWhole(vector_);
  EXPECT_THAT(takeLines(), IsEmpty());
  switches().spatial = true;
  dispatchWhole(vector_);
  EXPECT_EQ(takeLines().size(), 2U);
  switches().element = true;
  dispatchWhole(scalar_);
  EXPECT_THAT(takeLines(), IsEmpty());
  scalar_.description = "Whole Element volume";
  dispatchWhole(scalar_);
  EXPECT_EQ(takeLines().size(), 2U);
  scalar_.description = "whole element volume, stress, spatial";
  dispatchWhole(scalar_);
  EXPECT_THAT(takeLines(), IsEmpty());
}

TEST_F(DispatchTest, InvariantsOrAllMakeEveryFieldWantedWhateverItsDescription) {
  switches().tensorInvariants = true;
  dispatchWhole(scalar_);
  EXPECT_EQ(takeLines().size(), 2U);
  switches().tensorInvariants = false;
  switches().allFieldOutputs = true;
  dispatchWhole(scalar_);
  EXPECT_EQ(takeLines().size(), 2U);
}

TEST_F(DispatchTest, AbsoluteExtremesChangeNoRecord) {
  switches().allFieldOutputs = switches().fieldComponents = true;
  for (const bool compute : {true, false}) {
    switches().computeValues = compute;
    for (const memory::Field* field : {&scalar_, &tensor_}) {
      switches().absoluteMax = switches().absoluteMin = false;
      dispatchWhole(*field);
      dispatchSet(*field);
      const std::vector<std::string> usual = takeLines();
      EXPECT_FALSE(usual.empty());
      switches().absoluteMax = switches().absoluteMin = true;
      dispatchWhole(*field);
      dispatchSet(*field);
      EXPECT_EQ(takeLines(), usual);
    }
  }
}

TEST_F(DispatchTest, TheWholeModelIsReducedFromBlocksAndASetFromValues) {
  switches().allFieldOutputs = true;
  dispatchWhole(scalar_);
  EXPECT_THAT(takeLines(), ElementsAre("Step_1__Frame_3__NT__max\t2", "Step_1__Frame_3__NT__min\t1"));
  dispatchSet(scalar_);
  EXPECT_THAT(takeLines(), ElementsAre("Step_1__Frame_3__TOP__NT__max\t5", "Step_1__Frame_3__TOP__NT__min\t5"));
}

TEST_F(DispatchTest, AFieldWithoutBlocksIsReducedOverTheWholeModelButNotListed) {
  switches().allFieldOutputs = true;
  scalar_.blocks.clear();
  dispatchWhole(scalar_);
  EXPECT_THAT(takeLines(),
              ElementsAre("Step_1__Frame_3__NT__max\t-1.79769e+308", "Step_1__Frame_3__NT__min\t1.79769e+308"));
  switches().computeValues = false;
  dispatchWhole(scalar_);
  EXPECT_THAT(takeLines(), IsEmpty());
}

TEST_F(DispatchTest, ADepthOfZeroStopsTheReductionButNotTheListing) {
  switches().allFieldOutputs = true;
  dispatch(scalar_, "ALL", "", 0);
  EXPECT_THAT(takeLines(), IsEmpty());
  switches().computeValues = false;
  dispatch(scalar_, "ALL", "", 0);
  EXPECT_THAT(takeLines(), ElementsAre("Step_1__Frame_3__NT__max\t0", "Step_1__Frame_3__NT__min\t0"));
}

TEST_F(DispatchTest, ListingWritesNothingForAnUnwantedField) {
  switches().computeValues = false;
  dispatchWhole(scalar_);
  EXPECT_EQ(records(), "");
}

TEST_F(DispatchTest, ListingOfStressOverASetPutsTheInvariantsFirstAndTheWholeModelGetsNone) {
  switches().computeValues = false;
  switches().tensorInvariants = true;
  switches().engineeringMax = switches().engineeringMin = true;
  dispatchSet(tensor_);
  EXPECT_THAT(takeNames("Step_1__Frame_3__TOP__S__"),
              ElementsAre("tresca__max", "tresca__min", "tresca__enggmax", "tresca__enggmin", "inv3__max", "inv3__min",
                          "inv3__enggmax", "inv3__enggmin", "maxprincipal__max", "maxprincipal__min",
                          "maxprincipal__enggmax", "maxprincipal__enggmin", "outofplane_principal__max",
                          "outofplane_principal__min", "outofplane_principal__enggmax", "outofplane_principal__enggmin",
                          "mises__max", "mises__min", "mises__enggmax", "mises__enggmin"));
  dispatchWhole(tensor_);
  EXPECT_THAT(takeNames("Step_1__Frame_3__S__"),
              ElementsAre("mises__max", "mises__min", "mises__enggmax", "mises__enggmin"));
}

TEST_F(DispatchTest, ListingSpellsTheInvariantsAsReadersKnowThem) {
  switches().computeValues = false;
  switches().tensorInvariants = true;
  tensor_.invariants = {odb_Enum::maxInPlanePrincipal, odb_Enum::minInPlanePrincipal, odb_Enum::outOfPlanePrincipal,
                        odb_Enum::midPrincipal,        odb_Enum::minPrincipal,        odb_Enum::press};
  dispatchSet(tensor_);
  EXPECT_THAT(takeNames("Step_1__Frame_3__TOP__S__"),
              ElementsAre("press__max", "press__min", "midprincipal__max", "midprincipal__min", "minprincipal__max",
                          "minprincipal__min", "maxinplaneprincipal__max", "maxinplaneprincipal__min",
                          "mininplane_principal__max", "mininplane_principal__min", "outofplane_principal__max",
                          "outofplane_principal__min", "mises__max", "mises__min"));
}

TEST_F(DispatchTest, ListingOfATensorNamesTheComponentsItsLabelsEndIn) {
  switches().computeValues = false;
  switches().allFieldOutputs = switches().fieldComponents = true;
  tensor_.labels = {"S11", "E22", "12"};
  dispatchWhole(tensor_);
  EXPECT_THAT(takeNames("Step_1__Frame_3__S__"), ElementsAre("mises__max", "mises__min", "11__max", "11__min",
                                                             "22__max", "22__min", "12__max", "12__min"));
  tensor_.labels.clear();
  dispatchWhole(tensor_);
  EXPECT_THAT(takeNames("Step_1__Frame_3__S__"), ElementsAre("mises__max", "mises__min"));
}

TEST_F(DispatchTest, ListingOfAVectorNamesAllThreeComponentsWhateverItHas) {
  switches().computeValues = false;
  switches().allFieldOutputs = switches().fieldComponents = true;
  switches().engineeringMax = switches().engineeringMin = true;
  dispatchWhole(vector_);
  EXPECT_THAT(takeNames("Step_1__Frame_3__U__"),
              ElementsAre("mag__max", "mag__min", "mag__enggmax", "mag__enggmin", "1__max", "1__min", "2__max",
                          "2__min", "3__max", "3__min", "1__enggmax", "2__enggmax", "3__enggmax", "1__enggmin",
                          "2__enggmin", "3__enggmin"));
}

TEST_F(DispatchTest, ListingGoesByTheTypeOfTheFirstBlock) {
  switches().computeValues = false;
  switches().allFieldOutputs = true;
  scalar_.blocks = {nodeBlock(odb_Enum::vector, 1, {1}), nodeBlock(odb_Enum::scalar, 1, {1})};
  dispatchWhole(scalar_);
  EXPECT_THAT(takeNames("Step_1__Frame_3__NT__"), ElementsAre("mag__max", "mag__min"));
}

TEST_F(DispatchTest, ListingWritesTheSameNamesAsTheReduction) {
  switches().allFieldOutputs = switches().fieldComponents = true;
  switches().engineeringMax = switches().engineeringMin = true;
  vector_.values = {vectorValue(3, 4, 0, 5)};
  for (const memory::Field* field : {&scalar_, &vector_, &tensor_}) {
    for (const bool whole : {true, false}) {
      const auto run = [&] { whole ? dispatchWhole(*field) : dispatchSet(*field); };
      switches().computeValues = true;
      run();
      const std::vector<std::string> reduced = takeNames("Step_1__Frame_3__");
      switches().computeValues = false;
      run();
      EXPECT_EQ(takeNames("Step_1__Frame_3__"), reduced);
    }
  }
}

}  // namespace
