// Printed tables in, steps and frames out: which output of a run each table is of.
#include "importers/calculix/dat/printed_places.h"

#include <fmt/core.h>
#include <gmock/gmock.h>

#include "importers/calculix/dat/placed_tables.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string heading(const std::string& title, double time) {
  return fmt::format("\n {} and time  {:13.7E}\n\n", title, time);
}

std::string displacements(double time, const std::string& set = "TOP", const std::string& row = "1.0  2.0  3.0") {
  return heading("displacements (vx,vy,vz) for set " + set, time) + "         7  " + row + "\n";
}

std::string forces(double time, const std::string& set = "TOP") {
  return heading("forces (fx,fy,fz) for set " + set, time) + "         7  1.0  2.0  3.0\n";
}

std::string spaced(const std::string& words) {
  std::string text;
  for (const char c : words) text += c == ' ' ? "  " : std::string(1, c) + " ";
  return "\n     " + text + "\n\n";
}

std::string modes(const std::vector<double>& frequencies, int diameter = -1) {
  std::string text = spaced("EIGENVALUE OUTPUT") + " MODE NO    EIGENVALUE\n\n";
  for (std::size_t i = 0; i < frequencies.size(); ++i) {
    const std::string of = diameter < 0 ? "" : fmt::format("{:5}", diameter);
    text += fmt::format("{}{:7}  1.0  1.0  {:13.7E}  0.0\n", of, i + 1, frequencies[i]);
  }
  return text;
}

std::string complexModes(const std::vector<double>& frequencies) {
  std::string text = spaced("EIGENVALUE OUTPUT") + " MODE NO\n\n";
  for (std::size_t i = 0; i < frequencies.size(); ++i) {
    text += fmt::format("{:7}  1.0  {:13.7E}  0.0\n", i + 1, frequencies[i]);
  }
  return text;
}

std::string factors(const std::vector<double>& values) {
  std::string text = spaced("BUCKLING FACTOR OUTPUT") + " MODE NO       BUCKLING\n\n";
  for (std::size_t i = 0; i < values.size(); ++i) text += fmt::format("{:7}  {:13.7E}\n", i + 1, values[i]);
  return text;
}

std::string mode(int number) { return fmt::format("\n{:20}E I G E N V A L U E    N U M B E R {:5}\n\n", "", number); }
const std::string kReal = "\n     R E A L   P A R T\n\n";
const std::string kImaginary = "\n     I M A G I N A R Y   P A R T\n\n";

std::string frequency(double value) {
  return fmt::format(
      "P A R T I C I P A T I O N   F A C T O R S   F O R   F R E Q U E N C Y   {:19.13E} (CYCLES/TIME)\n\n"
      " MODE NO    FREQUENCY               FACTOR\n\n      1   0.5E+01   0.125E+00  -0.25E+00\n",
      value);
}

std::string pairOfSurfaces(double time) {
  return heading("statistics for slave set S, master set M", time) +
         "   total surface force (fx,fy,fz) and moment about the origin (mx,my,mz)\n\n   1. 2. 3. 4. 5. 6.\n";
}

const std::string kPrints = "*NODE PRINT, NSET=TOP\nU\n";

// A frame of the result file.
FrdResult block(int step, int increment, double value, int counter, AnalysisKind kind = AnalysisKind::steady,
                int mode = 0, int diameter = -1) {
  FrdResult result;
  result.step = step;
  result.increment = increment;
  result.value = value;
  result.frameCounter = counter;
  result.kind = kind;
  result.mode = mode;
  if (diameter >= 0) result.nodalDiameter = diameter;
  return result;
}

class PlacesTest : public testing::Test {
 protected:
  // "step/number value" of the frame of every table but marks, "step/-" for one without a frame.
  std::vector<std::string> places(const std::string& printed, const std::vector<std::string>& steps,
                                  const std::vector<FrdResult>& results = {}, const std::string& status = "") {
    Deck deck;
    if (!steps.empty()) deck = readDeck(writeText(directory_, "job.inp", text(steps)), ignore_);
    writeText(directory_, "job.sta", status);
    Frames frames(readStepTimes(directory_.file("job.sta")));
    int field = 0;
    for (const FrdResult& result : results) frames.find(result, {std::to_string(field++)});
    tables_ = placePrintedTables(writeText(directory_, "job.dat", printed), deck, true, frames, warn_);
    usesStatus_ = !frames.statusTimes().empty();
    for (const PrintedProblem& problem : tables_.problems) said_.push_back(problem.text);
    std::vector<std::string> found;
    for (const PrintedTable& table : tables_.tables) {
      if (table.format->isMark() || table.isOfSection) continue;
      const std::string part = (table.isImaginary ? " im" : "") + (table.part.empty() ? "" : " " + table.part);
      found.push_back(table.frame ? fmt::format("{}/{} {:g}{}", table.step, frames[*table.frame].info.incrementNumber,
                                                frames[*table.frame].info.value, part)
                                  : fmt::format("{}/-", table.step));
    }
    return found;
  }

  static std::string text(const std::vector<std::string>& steps) {
    std::string whole;
    for (const std::string& step : steps) whole += "*STEP\n" + step + "*END STEP\n";
    return whole;
  }

  TemporaryDirectory directory_;
  PrintedTables tables_;
  std::vector<std::string> said_;
  bool usesStatus_ = false;
  const WarningSink ignore_ = [](const base::Diagnostic&) {};
  const WarningSink warn_ = [this](const base::Diagnostic& said) { said_.push_back(base::textOf(said)); };
};

TEST_F(PlacesTest, TheDeckHasTheStepsAndTheirEnds) {
  EXPECT_THAT(places(displacements(0.5) + displacements(1) + displacements(1.5) + displacements(3),
                     {"*STATIC\n" + kPrints, "*STATIC\n1., 2.\n"}),
              ElementsAre("1/1 0.5", "1/2 1", "2/1 0.5", "2/2 2"));
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(PlacesTest, ARepeatedRequestIsASecondTableOfTheSameFrame) {
  const std::string twice = "*STATIC\n" + kPrints + "*NODE PRINT, NSET=TOP, GLOBAL=YES\nU\n";
  const auto tables = [](double time) {
    return displacements(time, "TOP", "1.0  2.0  3.0 L") + displacements(time, "TOP", "4.0  5.0  6.0");
  };
  EXPECT_THAT(places(tables(1) + tables(2), {twice, twice}), ElementsAre("1/1 1", "1/1 1", "2/1 1", "2/1 1"));
  EXPECT_THAT(places(tables(1) + tables(2), {}), ElementsAre("1/1 1", "1/1 1", "1/2 2", "1/2 2"))
      << "without a deck the axes tell";
}

TEST_F(PlacesTest, TheSameTimeAgainIsAnotherIncrement) {
  // The second step ends a billionth behind the first one.
  EXPECT_THAT(places(displacements(1) + displacements(1), {"*STATIC\n" + kPrints, "*STATIC\n1e-9, 1e-9\n"}),
              ElementsAre("1/1 1", "2/1 1e-09"));
  EXPECT_THAT(
      places(displacements(1) + forces(1), {"*STATIC\n" + kPrints, "*STATIC\n1e-9, 1e-9\n*NODE PRINT, NSET=TOP\nRF\n"}),
      ElementsAre("1/1 1", "2/1 1e-09"))
      << "no step prints both";
}

TEST_F(PlacesTest, TablesWithEqualRowsAreOneOutputWithoutADeck) {
  EXPECT_THAT(places(displacements(1) + displacements(1), {}), ElementsAre("1/1 1", "1/1 1"));
}

TEST_F(PlacesTest, TheStatusFileAndTheDeckTellWhichIncrementsPrint) {
  std::string status;
  for (int i = 1; i <= 7; ++i)
    status += fmt::format("     2  {:9}     1     2  0.100000E+01  {:12.6E}  1E-08\n", i, i * 1e-8);
  EXPECT_THAT(places(displacements(1) + displacements(1) + displacements(1) + displacements(1),
                     {"*STATIC\n" + kPrints, "*STATIC\n1e-8, 7e-8\n*NODE FILE, FREQUENCY=3\nU\n"}, {},
                     "     1          1     1     2  0.100000E+01  0.100000E+01  0.100000E+01\n" + status),
              ElementsAre("1/1 1", "2/3 3e-08", "2/6 6e-08", "2/7 7e-08"));
  EXPECT_THAT(said_, IsEmpty());
}

// Of such a step the status file has every increment twice: once for temperatures, once for displacements.
TEST_F(PlacesTest, UncoupledIncrementsHaveTwoLinesInTheStatusFile) {
  std::string status;
  for (const int increment : {1, 1, 2, 2})
    status += fmt::format("     1  {:9}     1     4  {:12.6E}  {:12.6E}  0.500000E+00\n", increment, increment * .5,
                          increment * .5);
  EXPECT_THAT(
      places(displacements(1) + displacements(2),
             {"*UNCOUPLED TEMPERATURE-DISPLACEMENT\n.5, 1.\n*NODE PRINT, NSET=TOP, FREQUENCY=2\nU\n", "*STATIC\n"}, {},
             status + "     2          1     1     4  0.200000E+01  0.100000E+01  0.100000E+01\n"),
      ElementsAre("1/2 1", "2/1 1"));
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(PlacesTest, TimePointsTellTooWhichIncrementsPrint) {
  // Increments of 0.1, printed at 0.2 and 0.5: of equal printed times nothing else tells the increments.
  std::string status = "     1          1     1     2  0.100000E+07  0.100000E+07  0.100000E+07\n";
  for (int i = 1; i <= 5; ++i)
    status += fmt::format("     2  {:9}     1     2  0.100000E+07  {:12.6E}  .1\n", i, i * .01);
  EXPECT_THAT(places(displacements(1e6) + displacements(1e6) + displacements(1e6),
                     {"*TIME POINTS, NAME=T\n.02\n*STATIC\n1e6, 1e6\n*NODE PRINT, NSET=TOP\nU\n",
                      "*STATIC\n.01, .05\n*NODE FILE, TIME POINTS=T\nU\n"},
                     {}, status),
              ElementsAre("1/1 1e+06", "2/2 0.02", "2/5 0.05"));
}

TEST_F(PlacesTest, WhatNothingTellsIsSaid) {
  EXPECT_THAT(places(displacements(1e6) + displacements(1e6) + displacements(1e6, "TOP", "4.0  5.0  6.0"),
                     {"*STATIC\n1e6, 1e6\n" + kPrints, "*STATIC\n.01, .05\n"}),
              testing::SizeIs(3));
  EXPECT_THAT(said_, Contains(HasSubstr("too few digits to distinguish increments")));
}

TEST_F(PlacesTest, FramesOfTheResultFileGetTheTablesOfTheirIncrement) {
  EXPECT_THAT(places(displacements(0.25) + displacements(0.5) + displacements(1), {"*STATIC\n" + kPrints},
                     {block(1, 2, 0.5, 1), block(1, 5, 1, 2)}),
              ElementsAre("1/1 0.25", "1/2 0.5", "1/5 1"));
}

TEST_F(PlacesTest, ModesHaveTheirNumbersAndWhatComesBehindThemIsOfTheNextStep) {
  EXPECT_THAT(places(displacements(1) + modes({40, 50}) + mode(1) + displacements(2) + mode(2) + displacements(2) +
                         displacements(2),
                     {"*STATIC\n" + kPrints, "*FREQUENCY\n2\n", "*STATIC\n"}),
              ElementsAre("1/1 1", "2/-", "2/1 40", "2/2 50", "3/1 1"));
}

TEST_F(PlacesTest, ModesArePairedByDiameterAndNumber) {
  // The result file lacks the second mode of the first diameter, which it counts.
  const std::string printed = modes({10, 10, 30}, 1) + mode(1) + kReal + displacements(1) + kImaginary +
                              displacements(1) + mode(2) + displacements(1) + mode(3) + displacements(1) +
                              modes({20}, 2) + mode(1) + displacements(1);
  const std::vector<FrdResult> results = {block(1, 1, 10, 1, AnalysisKind::modal, 1, 1),
                                          block(1, 1, 30, 3, AnalysisKind::modal, 3, 1),
                                          block(1, 1, 20, 4, AnalysisKind::modal, 1, 2)};
  const std::string cyclic = "*FREQUENCY\n3\n*SELECT CYCLIC SYMMETRY MODES, NMIN=1, NMAX=2\n" + kPrints;
  EXPECT_THAT(places(printed, {cyclic}, results),
              ElementsAre("1/-", "1/1 10", "1/1 10 im", "1/2 10", "1/3 30", "1/-", "1/4 20"));
  EXPECT_THAT(places(printed, {}, results),
              ElementsAre("1/-", "1/1 10", "1/1 10 im", "1/2 10", "1/3 30", "1/-", "1/4 20"));
}

TEST_F(PlacesTest, EveryStepOfACyclicModelHasItsDiameters) {
  const std::string printed = modes({10}, 0) + mode(1) + displacements(1) + modes({20}, 1) + mode(1) +
                              displacements(1) + modes({30}, 2) + mode(1) + displacements(1);
  const auto cyclic = [](int diameter) {
    return fmt::format("*FREQUENCY\n1\n*SELECT CYCLIC SYMMETRY MODES, NMIN={0}, NMAX={0}\n{1}", diameter, kPrints);
  };
  EXPECT_THAT(places(printed, {cyclic(0), cyclic(1), cyclic(2)}),
              ElementsAre("1/-", "1/1 10", "2/-", "2/1 20", "3/-", "3/1 30"));
  EXPECT_THAT(places(printed, {},
                     {block(1, 1, 10, 1, AnalysisKind::modal, 1, 0), block(2, 1, 20, 2, AnalysisKind::modal, 1, 1),
                      block(3, 1, 30, 3, AnalysisKind::modal, 1, 2)}),
              ElementsAre("1/-", "1/1 10", "2/-", "2/1 20", "3/-", "3/1 30"));
}

TEST_F(PlacesTest, ComplexModesHaveTheirFrequencies) {
  const std::string printed = modes({40}) + complexModes({41, 42}) + mode(1) + kReal + displacements(0) + kImaginary +
                              displacements(0) + mode(2) + displacements(0) + displacements(0.5);
  EXPECT_THAT(
      places(printed, {"*FREQUENCY\n1\n", "*COMPLEX FREQUENCY, CORIOLIS\n2\n" + kPrints, "*MODAL DYNAMIC\n.5, .5\n"},
             {block(2, 0, 41, 2, AnalysisKind::other, 1), block(2, 0, 42, 3, AnalysisKind::other, 2)}),
      ElementsAre("1/-", "2/-", "2/1 41", "2/1 41 im", "2/2 42", "3/1 0.5"));
}

TEST_F(PlacesTest, GreenFunctionsAreModesWithoutAList) {
  const std::string printed =
      displacements(1) + mode(1) + displacements(2) + mode(2) + displacements(2) + displacements(2);
  EXPECT_THAT(places(printed, {"*STATIC\n" + kPrints, "*GREEN\n", "*STATIC\n"}),
              ElementsAre("1/1 1", "2/1 0", "2/2 0", "3/1 1"));
}

TEST_F(PlacesTest, StepsWithoutTimeTakeNone) {
  EXPECT_THAT(places(displacements(1) + displacements(2), {"*STATIC\n" + kPrints, "*SENSITIVITY\n", "*STATIC\n"}),
              ElementsAre("1/1 1", "3/1 1"));
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(PlacesTest, BucklingStepsPrintTheirBaseStateBeforeTheirFactors) {
  EXPECT_THAT(places(displacements(1) + displacements(1) + factors({48, 106}) + mode(1) + displacements(1) + mode(2) +
                         displacements(1) + displacements(2),
                     {"*STATIC\n" + kPrints, "*BUCKLE\n2\n", "*STATIC\n"}),
              ElementsAre("1/1 1", "2/0 0", "2/-", "2/1 48", "2/2 106", "3/1 1"));
}

TEST_F(PlacesTest, SteadyStatesPrintEverythingTwiceForEachFrequency) {
  const auto both = [](double value) {
    return displacements(value) + forces(value) + displacements(value) + forces(value);
  };
  const std::string steady = "*STEADY STATE DYNAMICS\n1., 9., 2\n*NODE PRINT, NSET=TOP\nU, RF\n";
  EXPECT_THAT(places(frequency(1) + both(1) + frequency(9) + both(9) + frequency(10) + both(10),
                     {steady, "*STEADY STATE DYNAMICS\n10., 90., 2\n"}),
              ElementsAre("1/1 1", "1/1 1", "1/1 1", "1/1 1 im", "1/1 1 im", "1/2 9", "1/2 9", "1/2 9", "1/2 9 im",
                          "1/2 9 im", "2/1 10", "2/1 10", "2/1 10", "2/1 10 im", "2/1 10 im"))
      << "the deck has the end of the range";
}

TEST_F(PlacesTest, ForcesBetweenSurfacesAreToldApartByTheDeck) {
  const std::string contact = "*STATIC\n*CONTACT PRINT, SLAVE=S, MASTER=M\nCFS, CF, CFN\n";
  const std::string printed = pairOfSurfaces(1) + pairOfSurfaces(1) + pairOfSurfaces(1);
  EXPECT_THAT(places(printed, {contact}), IsEmpty()) << "they have no rows of their own";
  const auto parts = [this] {
    std::vector<std::string> found;
    for (const PrintedTable& table : tables_.tables) {
      if (table.isOfSection) found.push_back(fmt::format("{} {}", table.step, table.part));
    }
    return found;
  };
  EXPECT_THAT(parts(), ElementsAre("1 CFS", "1 ", "1 CFN"));
  places(printed, {});
  EXPECT_THAT(parts(), ElementsAre("1 ", "1 2", "1 3"));
}

TEST_F(PlacesTest, TablesOfAnotherRunAreLeftOut) {
  const std::string status =
      "     1          1     1     2  0.100000E+04  0.100000E+04  0.100000E+04\n"
      "     2          1     1     2  0.100001E+04  0.100000E-01  0.100000E-01\n";
  const std::vector<std::string> deck = {"*STATIC\n1000., 1000.\n" + kPrints, "*STATIC\n.01, .01\n"};
  EXPECT_THAT(places(displacements(1) + displacements(1.5) + displacements(2), deck, {block(2, 1, 1000.01, 2)}, status),
              IsEmpty());
  EXPECT_THAT(said_, ElementsAre(HasSubstr("the tables are not of this run, and are left out: the times")));
}

TEST_F(PlacesTest, TablesOfMoreModesThanTheDeckHasAreOfAnotherRun) {
  EXPECT_THAT(places(modes({1}) + modes({2}), {"*FREQUENCY\n1\n", "*STATIC\n" + kPrints}), IsEmpty());
  EXPECT_THAT(said_, ElementsAre(HasSubstr("not of this run")));
}

TEST_F(PlacesTest, ModesOfOtherFrequenciesAreOfAnotherRun) {
  EXPECT_THAT(places(modes({10}) + mode(1) + displacements(1), {"*FREQUENCY\n1\n" + kPrints},
                     {block(1, 1, 12, 1, AnalysisKind::modal, 1)}),
              IsEmpty());
  EXPECT_THAT(said_, ElementsAre(HasSubstr("mode 1 of step 1 has the frequency 10, in the results 12")));
}

TEST_F(PlacesTest, WithoutAStatusFileFramesForWhichNothingIsPrintedTell) {
  EXPECT_THAT(places(displacements(1) + displacements(2),
                     {"*STATIC\n1000., 1000.\n" + kPrints, "*STATIC\n.01, .02\n*NODE FILE\nU\n"},
                     {block(2, 1, 1000.01, 1), block(2, 2, 1000.02, 2)}),
              IsEmpty());
  EXPECT_THAT(said_, ElementsAre(HasSubstr("none of 2 frames has printed tables")));
}

TEST_F(PlacesTest, AStatusFileOfAnotherRunIsNotBelieved) {
  EXPECT_THAT(
      places(displacements(1), {}, {}, "     1          1     1     2  0.500000E+01  0.500000E+01  0.500000E+01\n"),
      ElementsAre("1/1 1"));
  EXPECT_FALSE(usesStatus_);
}

TEST_F(PlacesTest, ADeckWithOtherStepsIsNotBelieved) {
  EXPECT_THAT(
      places(displacements(1) + displacements(2), {"*STATIC\n" + kPrints}, {block(1, 1, 1, 1), block(2, 1, 2, 2)}),
      ElementsAre("1/1 1", "2/1 1"));
  EXPECT_THAT(
      said_,
      ElementsAre("note: the deck has the steps 1 to 1, the results 1 to 2: the steps of the deck are not used"));
}

TEST_F(PlacesTest, ARestartGoesOnWhereTheEarlierRunEnded) {
  EXPECT_THAT(places(displacements(2.25) + displacements(2.5), {"*RESTART, READ, STEP=2\n*STATIC\n.25, .5\n"}, {},
                     "     3          1     1     2  0.225000E+01  0.250000E+00  0.250000E+00\n"
                     "     3          2     1     2  0.250000E+01  0.500000E+00  0.250000E+00\n"),
              ElementsAre("3/1 0.25", "3/2 0.5"));
}

TEST_F(PlacesTest, EveryPeriodOfASteadyStateStartsFromZero) {
  EXPECT_THAT(places(displacements(2) + displacements(0) + displacements(0.5) + displacements(0) + displacements(0.25) +
                         displacements(3),
                     {"*STATIC\n1., 2.\n" + kPrints, "*STEADY STATE DYNAMICS, HARMONIC=NO\n1., 9., 2\n", "*STATIC\n"}),
              ElementsAre("1/1 2", "2/1 0", "2/2 0.5", "2/3 0", "2/4 0.25", "3/1 1"));
}

TEST_F(PlacesTest, TimeCanBeReset) {
  EXPECT_THAT(places(displacements(1) + displacements(1), {"*STATIC\n" + kPrints, "*STATIC, TIME RESET\n"}),
              ElementsAre("1/1 1", "2/1 1"));
}

}  // namespace
}  // namespace importers::calculix
