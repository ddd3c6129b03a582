// Which frames a run becomes: their numbers, values and descriptions.
#include <gmock/gmock.h>

#include "import_fixture.h"

namespace importers::calculix {
namespace {

using namespace frd_text;
using odbstore::Reader;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

TEST_F(ImportTest, FieldsOfOneCounterMakeOneFrame) {
  import(twoBars() + temperature({.value = 0.5}) +
         result({.value = 0.5}, "DISP", kDisplacement,
                {{ 1,
                   { 1,
                     2,
                     3 } }}) +
         temperature({.increment = 3, .counter = 2, .value = 1.0}) + kEnd);
  EXPECT_THAT(increments("Step-1"), ElementsAre(1, 3));
  EXPECT_THAT(frameValues("Step-1"), ElementsAre(0.5, 1.0));
  EXPECT_THAT(descriptions("Step-1"),
              ElementsAre("Increment 1: Step Time = 0.5000", "Increment 3: Step Time = 1.0000"));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_THAT(fieldOf(*step, "U").frames(), ElementsAre(0));
}

TEST_F(ImportTest, StepsAreNamedByTheirNumberAndDescribedByTheDeck) {
  import(twoBars() + temperature({}) + temperature({.step = 3, .counter = 2, .value = 2.0}) + kEnd,
         "*STEP\nfirst\n*STATIC\n*END STEP\n*STEP\n*STATIC\n*END STEP\n*STEP\nthe third\n*STATIC\n*END STEP\n");
  const Reader reader(output_);
  EXPECT_THAT(reader.steps(), ElementsAre("Step-1", "Step-2", "Step-3")) << "the second has no results, but a mass";
  EXPECT_THAT(reader.step("Step-2")->frames(), IsEmpty());
  EXPECT_EQ(reader.step("Step-1")->info().description, "first");
  EXPECT_EQ(reader.step("Step-3")->info().description, "the third");
}

TEST_F(ImportTest, TimesCountFromTheStartOfTheStep) {
  import(twoBars() + temperature({.value = 0.1}) + temperature({.increment = 2, .counter = 2, .value = 0.3}) +
         temperature({.step = 2, .counter = 3, .value = 0.4}) + kEnd);
  EXPECT_THAT(frameValues("Step-1"), ElementsAre(0.1, 0.3));
  EXPECT_THAT(frameValues("Step-2"), ElementsAre(0.1)) << "without the digits that a subtraction makes up";
}

constexpr const char* kStatusHeading =
    "SUMMARY OF JOB INFORMATION\n  STEP      INC     ATT  ITRS     TOT TIME     STEP TIME      INC TIME\n";

TEST_F(ImportTest, TheStatusFileKnowsWhenAStepStarted) {
  // The last increments of step 1, which ended at 2, were not asked for, nor the first one of step 2.
  import(twoBars() + temperature({.value = 0.5}) +
             temperature({.step = 2, .increment = 2, .counter = 2, .value = 2.75}) + kEnd,
         "",
         std::string(kStatusHeading) +
             "     1          1     1     2  0.500000E+00  0.500000E+00  0.500000E+00\n"
             "     1          2     1     2  0.200000E+01  0.200000E+01  0.150000E+01\n"
             "     2          1     1U    2  0.200000E+01  0.000000E+00  0.100000E+01\n"
             "     2          1     2     2  0.225000E+01  0.250000E+00  0.250000E+00\n"
             "     2          2     1     2  0.275000E+01  0.750000E+00  0.500000E+00\n");
  EXPECT_THAT(frameValues("Step-2"), ElementsAre(0.75));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(ImportTest, AStatusFileOfAnotherRunIsNotUsed) {
  import(twoBars() + temperature({.value = 0.5}) + temperature({.step = 2, .counter = 2, .value = 0.75}) + kEnd, "",
         std::string(kStatusHeading) +
             "     1          1     1     2  0.100000E+01  0.100000E+01  0.100000E+01\n"
             "     2          1     1     2  0.500000E+01  0.400000E+01  0.100000E+01\n");
  EXPECT_THAT(frameValues("Step-1"), ElementsAre(0.5));
  EXPECT_THAT(frameValues("Step-2"), ElementsAre(0.25));
  EXPECT_THAT(warnings_,
              ElementsAre(EndsWith("job.sta: warning: its times are not those of the results, and are not used")));
}

TEST_F(ImportTest, ModesAreNumberedAndTakeNoTime) {
  import(twoBars() + temperature({.value = 1.0}) + temperature({.step = 2, .counter = 2, .value = 139.82, .kind = 2}) +
         temperature(
             {.step = 2, .counter = 3, .value = 8775.4, .kind = 2, .more = "    1PHID                          4\n"}) +
         temperature({.step = 3, .counter = 4, .value = 1.00001, .kind = 1}) + kEnd);
  EXPECT_THAT(increments("Step-2"), ElementsAre(1, 2));
  EXPECT_THAT(frameValues("Step-2"), ElementsAre(139.82, 8775.4));
  EXPECT_THAT(descriptions("Step-2"),
              ElementsAre("Mode 1: Frequency = 139.82", "Mode 2: Frequency = 8775.4, Nodal Diameter = 4"));
  EXPECT_THAT(frameValues("Step-3"), ElementsAre(1e-5));
  EXPECT_THAT(descriptions("Step-3"), ElementsAre("Increment 1: Step Time = 1e-05"));
}

TEST_F(ImportTest, BucklingStartsFromABaseState) {
  import(twoBars() + temperature({.counter = 1, .value = 0.0, .kind = 4}) +
         temperature({.counter = 2, .value = 10.75, .kind = 4}) +
         temperature({.counter = 3, .value = 22.5, .kind = 4}) + kEnd);
  EXPECT_THAT(increments("Step-1"), ElementsAre(0, 1, 2));
  EXPECT_THAT(frameValues("Step-1"), ElementsAre(0.0, 10.75, 22.5));
  EXPECT_THAT(descriptions("Step-1"),
              ElementsAre("Base State", "Mode 1: Buckling Factor = 10.75", "Mode 2: Buckling Factor = 22.5"));
}

TEST_F(ImportTest, SteadyStateDynamicsHasFrequenciesAndImaginaryParts) {
  import(twoBars() +
         result({.increment = 0, .counter = 1, .value = 100, .kind = 1}, "DISP", kDisplacement,
                {{ 1,
                   { 1,
                     2,
                     3 } }}) +
         result({.increment = 0, .counter = 1, .value = 100, .kind = 1}, "DISPI", kDisplacement,
                {{ 1,
                   { 4,
                     5,
                     6 } }}) +
         result({.increment = 0, .counter = 2, .value = 200, .kind = 1}, "DISP", kDisplacement,
                {{ 1,
                   { 7,
                     8,
                     9 } }}) +
         kEnd);
  EXPECT_THAT(increments("Step-1"), ElementsAre(1, 2));
  EXPECT_THAT(descriptions("Step-1"), ElementsAre("Increment 1: Frequency = 100", "Increment 2: Frequency = 200"));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_THAT(rowsOf(fieldOf(*step, "U_IM").blocks.at(0)), ElementsAre(4, 5, 6));
  EXPECT_THAT(rowsOf(fieldOf(*step, "U").blocks.at(0), 1), ElementsAre(7, 8, 9));
}

TEST_F(ImportTest, AFieldThatComesAgainMakesAnotherFrame) {
  import(twoBars() + temperature({}, 1) + temperature({}, 2) + kEnd);
  const auto step = Reader(output_).step("Step-1");
  ASSERT_EQ(step->frames().size(), 2U);
  EXPECT_THAT(rowsOf(fieldOf(*step, "NT").blocks.at(0), 1), ElementsAre(2));
}

}  // namespace
}  // namespace importers::calculix
