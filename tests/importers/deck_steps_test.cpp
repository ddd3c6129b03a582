// What a deck says of its steps: times, outputs and printed tables.
#include "importers/calculix/deck/deck_steps.h"

#include <gmock/gmock.h>

#include "importers/calculix/deck/deck.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

DeckSteps stepsOf(const std::string& text) {
  const TemporaryDirectory directory;
  return readDeck(writeText(directory, "job.inp", text), [](const base::Diagnostic&) {}).steps;
}

std::string step(const std::string& lines) { return "*STEP\n" + lines + "*END STEP\n"; }

// "U of TOP", "totals ELSE of EALL": what a step prints, in its order.
std::vector<std::string> printsOf(const DeckStep& step) {
  std::vector<std::string> texts;
  for (const PrintRequest& request : step.prints) {
    const std::string totals = request.totals == PrintRequest::Totals::only  ? "sums of "
                               : request.totals == PrintRequest::Totals::yes ? "sums and "
                                                                             : "";
    texts.push_back(totals + request.key + " of " + request.set);
  }
  return texts;
}

struct ProcedureCase {
  const char* lines;
  Procedure procedure;
  std::optional<double> period;
};

TEST(DeckStepsTest, EveryProcedureHasItsKindAndItsPeriod) {
  using enum Procedure;
  const ProcedureCase cases[] = {
      {"*STATIC\n", time, 1.0},
      {"*STATIC\n.1, 2.5\n", time, 2.5},
      {"*Static, direct\n.1\n", time, 1.0},
      {"*DYNAMIC\n1e-3, 5e-2\n", time, 5e-2},
      {"*COUPLED TEMPERATURE-DISPLACEMENT\n1., 10.\n", time, 10.0},
      {"*HEAT TRANSFER, STEADY STATE\n", time, 1.0},
      {"*MODAL DYNAMIC\n.1, .5\n", time, 0.5},
      {"*MODAL DYNAMIC, STEADY STATE\n.1, .01\n", time, std::nullopt},
      {"*HEAT TRANSFER, MODAL DYNAMIC\n.1, .5\n", time, 0.5},
      {"*HEAT TRANSFER, FREQUENCY\n10\n", modes, 0.0},
      {"*FREQUENCY\n10\n", modes, 0.0},
      {"*COMPLEX FREQUENCY, CORIOLIS\n10\n", modes, 0.0},
      {"*GREEN\n", modes, 0.0},
      {"*SENSITIVITY\n", time, 0.0},
      {"*BUCKLE\n3\n", buckling, 0.0},
      {"*STEADY STATE DYNAMICS\n1., 9., 3\n", steadyState, 0.0},
      {"*STEADY STATE DYNAMICS, HARMONIC=NO\n1., 9., 3\n", time, 0.0},
  };
  for (const ProcedureCase& expected : cases) {
    const DeckSteps found = stepsOf(step(expected.lines));
    ASSERT_EQ(found.steps.size(), 1U);
    EXPECT_EQ(found.steps[0].procedure, expected.procedure) << expected.lines;
    EXPECT_EQ(found.steps[0].period, expected.period) << expected.lines;
  }
}

TEST(DeckStepsTest, TotalTimeCanBeSet) {
  const DeckSteps found = stepsOf(step("*STATIC, TIME RESET\n") + step("*STATIC, TOTAL TIME AT START=2.5\n"));
  EXPECT_THAT(found.steps[0].startsAt, Optional(0.0));
  EXPECT_THAT(found.steps[1].startsAt, Optional(2.5));
}

TEST(DeckStepsTest, ASteadyStateHasTheEndOfItsRange) {
  EXPECT_EQ(stepsOf(step("*STEADY STATE DYNAMICS\n100., 900., 3\n")).steps[0].lastFrequency, 900);
}

TEST(DeckStepsTest, NodalDiametersHaveARange) {
  const DeckSteps found =
      stepsOf(step("*FREQUENCY\n3\n*SELECT CYCLIC SYMMETRY MODES, NMIN=1, NMAX=4\n") +
              step("*FREQUENCY\n3\n*SELECT CYCLIC SYMMETRY MODES, NMIN=2\n") + step("*FREQUENCY\n3\n"));
  EXPECT_EQ(found.steps[0].diameters, (std::pair{1, 4}));
  EXPECT_EQ(found.steps[1].diameters, (std::pair{2, 2}));
  EXPECT_TRUE(found.steps[1].isCyclic);
  EXPECT_FALSE(found.steps[2].isCyclic);
}

// As the solver does it: the last number counts for all requests of the step and for the steps behind.
TEST(DeckStepsTest, AllRequestsOfAStepShareTheirFrequency) {
  const DeckSteps found =
      stepsOf(step("*STATIC\n*NODE PRINT, NSET=A\nU\n*NODE FILE, FREQUENCY=3\nU\n") +
              step("*STATIC\n*NODE PRINT, NSET=A\nU\n") + step("*STATIC\n*EL PRINT, ELSET=E, FREQUENCY=2\nS\n"));
  EXPECT_EQ(found.steps[0].frequency, 3);
  EXPECT_EQ(found.steps[1].frequency, 3);
  EXPECT_EQ(found.steps[2].frequency, 2);
}

TEST(DeckStepsTest, FrequencyZeroTakesRequestsBack) {
  const DeckSteps found = stepsOf(step("*STATIC\n*NODE PRINT, NSET=A, FREQUENCY=4\nU\n*EL PRINT, ELSET=E\nS\n") +
                                  step("*STATIC\n*NODE PRINT, NSET=A, FREQUENCY=0\nU\n"));
  EXPECT_THAT(printsOf(found.steps[1]), ElementsAre("S of E"));
  EXPECT_EQ(found.steps[1].frequency, 4);
}

TEST(DeckStepsTest, TimePointsTakeThePlaceOfTheFrequency) {
  const std::string points =
      "*TIME POINTS, NAME=T\n.3, .1\n.55\n*TIME POINTS, NAME=Total, TIME=TOTAL TIME, GENERATE\n1., 2., .25\n";
  const DeckSteps found =
      stepsOf(points + step("*STATIC\n*NODE PRINT, NSET=A, TIME POINTS=t\nU\n*NODE FILE\nU\n") +
              step("*STATIC\n*NODE FILE, TIME POINTS=TOTAL\nU\n") + step("*STATIC\n*NODE FILE, FREQUENCY=2\nU\n"));
  EXPECT_THAT(found.steps[0].timePoints, ElementsAre(.1, .3, .55));
  EXPECT_FALSE(found.steps[0].timePointsAreTotal);
  EXPECT_THAT(found.steps[1].timePoints, ElementsAre(1, 1.25, 1.5, 1.75, 2));
  EXPECT_TRUE(found.steps[1].timePointsAreTotal);
  EXPECT_THAT(found.steps[2].timePoints, IsEmpty());
}

TEST(DeckStepsTest, TheFirstRequestOfAKindTakesThePlaceOfEarlierOnes) {
  const DeckSteps found = stepsOf(step("*STATIC\n*NODE PRINT, NSET=Top face\nU, RF\n*EL PRINT, ELSET=E\nS\n*SECTION "
                                       "PRINT, SURFACE=Sur, NAME=P\nSOF\n") +
                                  step("*STATIC\n*NODE PRINT, NSET=B\nV\n*NODE PRINT, NSET=C, TOTALS=YES\nRF\n") +
                                  step("*STATIC\n*EL PRINT, ELSET=E, TOTALS=ONLY\nELSE,\nEVOL\n"));
  EXPECT_THAT(printsOf(found.steps[0]), ElementsAre("U of TOPFACE", "RF of TOPFACE", "S of E", "SOF of SUR"));
  EXPECT_THAT(printsOf(found.steps[1]), ElementsAre("S of E", "SOF of SUR", "V of B", "sums and RF of C"));
  EXPECT_THAT(printsOf(found.steps[2]),
              ElementsAre("SOF of SUR", "V of B", "sums and RF of C", "sums of ELSE of E", "sums of EVOL of E"));
}

TEST(DeckStepsTest, ContactIsPrintedForAllOrForAPair) {
  const DeckSteps found =
      stepsOf(step("*STATIC\n*CONTACT PRINT\nCDIS\n*CONTACT PRINT, SLAVE=Sla, MASTER=Mas\nCF, CFN\n"));
  EXPECT_THAT(printsOf(found.steps[0]), ElementsAre("CDIS of ", "CF of SLA, MAS", "CFN of SLA, MAS"));
}

TEST(DeckStepsTest, ARestartCountsOnFromAnEarlierRun) {
  const DeckSteps found = stepsOf("*RESTART, READ, STEP=2\n" + step("*STATIC\n"));
  EXPECT_THAT(found.stepsBefore, Optional(2));
  EXPECT_EQ(found.find(2), nullptr);
  EXPECT_EQ(found.find(3), found.steps.data());
  EXPECT_FALSE(found.steps[0].knowsPrints);
  EXPECT_EQ(stepsOf("*RESTART, READ\n" + step("*STATIC\n")).stepsBefore, std::nullopt);
}

TEST(DeckStepsTest, WhatIsNoStepIsNone) {
  const DeckSteps found =
      stepsOf("*NODE PRINT, NSET=A\nU\n*STATIC\n1., 2.\n*TIME POINTS, NAME=T, GENERATE\n0., 1e300, 1e-300\n");
  EXPECT_THAT(found.steps, IsEmpty());
  EXPECT_EQ(found.find(1), nullptr);
  EXPECT_EQ(found.find(-2000000000), nullptr);
}

}  // namespace
}  // namespace importers::calculix
