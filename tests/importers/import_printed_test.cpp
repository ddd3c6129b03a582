// Printed tables in the database: their steps and frames, fields and histories.
#include <gmock/gmock.h>

#include "import_fixture.h"

namespace importers::calculix {
namespace {

using namespace frd_text;
using odbstore::Reader;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string table(const std::string& title, double time, const std::string& rows) {
  return fmt::format("\n {} and time  {:13.7E}\n\n{}", title, time, rows);
}

std::string displacement(double time, double value, const std::string& set = "TOP", const std::string& mark = "") {
  return table("displacements (vx,vy,vz) for set " + set, time,
               fmt::format("         3  {:12.6E}  0.000000E+00 -1.000000E+00{}\n", value, mark));
}

std::string stress(double time, double value) {
  return table("stresses (elem, integ.pnt.,sxx,syy,szz,sxy,sxz,syz) for set BARS", time,
               fmt::format("        10   1  {:12.6E}  2.0  3.0  4.0  5.0  6.0\n"
                           "        20   1  1.0  2.0  3.0  4.0  5.0  6.0 _shell_0000000001\n",
                           value));
}

std::string mode(int number) { return fmt::format("\n{:20}E I G E N V A L U E    N U M B E R {:5}\n\n", "", number); }

const std::string kSets = "*NSET, NSET=Top\n3\n*ELSET, ELSET=bars\n10, 20\n";
const std::string kStatic = "*STEP\n*STATIC\n*END STEP\n";
const std::string kFrequency = "*STEP\n*FREQUENCY\n2\n*END STEP\n";
const std::string kBuckle = "*STEP\n*BUCKLE\n2\n*END STEP\n";
const std::string kSteadyState = "*STEP\n*STEADY STATE DYNAMICS\n1.,9.,2\n*END STEP\n";
const std::string kEigenvalues =
    "\n     E I G E N V A L U E   O U T P U T\n\n MODE NO    EIGENVALUE                       FREQUENCY\n\n"
    "      1   0.4000000E+02   0.6300000E+01   0.1000000E+01   0.0000000E+00\n"
    "      2   0.1600000E+03   0.1260000E+02   0.2000000E+01   0.0000000E+00\n";
const std::string kFactors =
    "\n     B U C K L I N G   F A C T O R   O U T P U T\n\n MODE NO       BUCKLING\n                FACTOR\n\n"
    "      1   0.4800000E+02\n      2   0.1060000E+03\n";

class PrintedTest : public ImportTest {
 protected:
  ImportSummary importPrinted(const std::string& printed, const std::string& deck, const std::string& results = "",
                              const std::string& status = "") {
    run_.printed = writeText(directory_, "job.dat", printed);
    return import(twoBars() + results + kEnd, deck.empty() ? "" : kSets + deck, status);
  }

  std::vector<float> history(const std::string& step, const std::string& region, const std::string& output) {
    return Reader(output_).step(step)->historySamples(region, output).numbers;
  }

  std::vector<std::string> steps() { return Reader(output_).steps(); }
};

TEST_F(PrintedTest, ControlCharactersInASetThatTheDeckLacksBecomeBlanks) {
  const std::string forces = table("total force (fx,fy,fz) for set O\x1b[DD", 0.5, "  1.0E+00  2.0E+00  3.0E+00\n");
  importPrinted(forces, kStatic);
  EXPECT_THAT(warnings_, testing::Contains(HasSubstr("job.dat:2: warning: the name \"O\\x1b[DD\" has control")));
}

TEST_F(PrintedTest, NodesBecomeHistoriesAndAFieldOfTheirOwn) {
  const ImportSummary summary =
      importPrinted(displacement(0.5, 2) + displacement(1, 4), kStatic,
                    temperature({.value = 0.5}) + temperature({.increment = 2, .counter = 2, .value = 1}));
  EXPECT_EQ(summary.histories, 3);
  EXPECT_EQ(summary.fields, 2);
  const auto step = Reader(output_).step("Step-1");
  const odbstore::StoredHistoryRegion region = step->historyRegion("Node 3 of Top");
  EXPECT_THAT(region.outputs, ElementsAre("U1", "U2", "U3"));
  EXPECT_EQ(region.info.node, 3);
  EXPECT_EQ(region.info.set, "") << "a set would stand for all of its nodes in the names of records";
  EXPECT_THAT(history("Step-1", "Node 3 of Top", "U1"), ElementsAre(0.5F, 2.0F, 1.0F, 4.0F));
  const odbstore::StoredField& field = fieldOf(*step, "U_PRINT");
  EXPECT_EQ(field.info.type, 3);
  EXPECT_THAT(field.frames(), ElementsAre(0, 1));
  EXPECT_THAT(rowsOf(field.blocks.at(0), 1), ElementsAre(4, 0, -1));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(PrintedTest, IntegrationPointsBecomeFieldsByTypeOfElement) {
  importPrinted(stress(1, 7), kStatic, temperature({}));
  const auto step = Reader(output_).step("Step-1");
  const odbstore::StoredField& field = fieldOf(*step, "S_IP");
  EXPECT_THAT(field.info.componentLabels, ElementsAre("11", "22", "33", "12", "13", "23"));
  ASSERT_EQ(field.blocks.size(), 1U);
  EXPECT_EQ(field.blocks[0].location()->info().position, odbstore::Position::integrationPoint);
  EXPECT_EQ(field.blocks[0].location()->info().elementType, "LINE2");
  EXPECT_THAT(rowsOf(field.blocks[0]), ElementsAre(7, 2, 3, 4, 5, 6));
  const odbstore::StoredHistoryRegion region = step->historyRegion("Element 10 Int Point 1 of bars");
  EXPECT_EQ(region.info.element, 10);
  EXPECT_EQ(region.info.integrationPoint, 1);
  EXPECT_THAT(region.outputs, testing::Contains("S13_10")) << "the record would name the point alone";
  EXPECT_THAT(history("Step-1", "Element 10 Int Point 1 of bars", "S13_10"), ElementsAre(1, 5));
}

TEST_F(PrintedTest, RowsInAxesOfTheElementMakeFieldsAndHistoriesOfTheirOwn) {
  importPrinted(stress(1, 7) + displacement(1, 2, "TOP", " L"), kStatic, temperature({}));
  const auto step = Reader(output_).step("Step-1");
  const odbstore::StoredField& field = fieldOf(*step, "S_IP_LOCAL");
  EXPECT_THAT(field.blocks[0].location()->elementLabels(), ElementsAre(20));
  EXPECT_THAT(rowsOf(field.blocks[0]), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(field.info.description, EndsWith("in local axes"));
  EXPECT_THAT(history("Step-1", "Element 20 Int Point 1 of bars", "S11_LOCAL_20"), ElementsAre(1, 1));
  EXPECT_NO_THROW(fieldOf(*step, "U_PRINT_LOCAL"));
  EXPECT_THROW(fieldOf(*step, "U_PRINT"), std::runtime_error);
  EXPECT_THAT(history("Step-1", "Node 3 of Top", "U1_LOCAL"), ElementsAre(1, 2));
}

TEST_F(PrintedTest, ANodeThatASetListsTwiceHasOneRow) {
  const std::string row = "         3  1.000000E+00  0.000000E+00 -1.000000E+00\n";
  importPrinted(table("displacements (vx,vy,vz) for set TOP", 1, row + row), kStatic, temperature({}));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_THAT(fieldOf(*step, "U_PRINT").blocks.at(0).location()->nodeLabels(), ElementsAre(3));
  EXPECT_THAT(history("Step-1", "Node 3 of Top", "U1"), ElementsAre(1, 1));
}

TEST_F(PrintedTest, StressesAtIntegrationPointsCanHaveThePlainName) {
  run_.stressAt = StressAt::integrationPoints;
  importPrinted(
      stress(1, 7) + displacement(1, 2), kStatic,
      result({}, "STRESS", kStress, {{1, {1, 2, 3, 4, 5, 6}}}) + result({}, "DISP", kDisplacement, {{1, {1, 2, 3}}}));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_EQ(fieldOf(*step, "S").blocks[0].location()->info().position, odbstore::Position::integrationPoint);
  EXPECT_EQ(fieldOf(*step, "S_NODAL").blocks[0].location()->info().position, odbstore::Position::elementNodal);
  EXPECT_NO_THROW(fieldOf(*step, "U"));
  EXPECT_NO_THROW(fieldOf(*step, "U_PRINT"));
}

TEST_F(PrintedTest, FramesThatTheResultsLackAreMadeAtTheirPlaces) {
  importPrinted(stress(0.25, 1) + stress(0.5, 2) + stress(1, 3), kStatic, temperature({.increment = 2, .value = 0.5}),
                "     1          1     1     2  0.250000E+00  0.250000E+00  0.250000E+00\n"
                "     1          2     1     2  0.500000E+00  0.500000E+00  0.250000E+00\n"
                "     1          3     1     2  0.100000E+01  0.100000E+01  0.500000E+00\n");
  EXPECT_THAT(increments("Step-1"), ElementsAre(1, 2, 3));
  EXPECT_THAT(frameValues("Step-1"), ElementsAre(0.25, 0.5, 1));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_THAT(fieldOf(*step, "NT").frames(), ElementsAre(1));
  EXPECT_THAT(fieldOf(*step, "S_IP").frames(), ElementsAre(0, 1, 2));
  EXPECT_THAT(rowsOf(fieldOf(*step, "S_IP").blocks[0], 1), testing::Contains(2));
}

TEST_F(PrintedTest, WithoutStatusAndDeckTimesMakeSteps) {
  importPrinted(displacement(1, 1) + displacement(2, 2), "",
                temperature({.value = 1}) + temperature({.step = 2, .counter = 2, .value = 2}));
  EXPECT_THAT(steps(), ElementsAre("Step-1", "Step-2"));
  EXPECT_THAT(history("Step-2", "Node 3 of TOP", "U1"), ElementsAre(1, 2));
}

TEST_F(PrintedTest, ModesHaveTheirFrequencies) {
  importPrinted(displacement(1, 1) + kEigenvalues + mode(1) + displacement(2, 11) + mode(2) + displacement(2, 12) +
                    displacement(2, 3),
                kStatic + kFrequency + kStatic, temperature({.step = 3, .value = 2}));
  EXPECT_THAT(steps(), ElementsAre("Step-1", "Step-2", "Step-3"));
  EXPECT_THAT(descriptions("Step-2"), ElementsAre("Mode 1: Frequency = 1", "Mode 2: Frequency = 2"));
  EXPECT_THAT(history("Step-2", "Node 3 of Top", "U1"), ElementsAre(1, 11, 2, 12));
  EXPECT_THAT(history("Step-2", "Whole Model", "EIGFREQ"), ElementsAre(1, 1, 2, 2));
  EXPECT_THAT(history("Step-3", "Node 3 of Top", "U1"), ElementsAre(testing::_, 3)) << "the table came again";
}

TEST_F(PrintedTest, BucklingStepsBeginWithTheirBaseState) {
  importPrinted(displacement(1, 1) + displacement(1, 2) + kFactors + mode(1) + displacement(1, 3) + mode(2) +
                    displacement(1, 4) + displacement(2, 5),
                kStatic + kBuckle + kStatic, temperature({.step = 3, .value = 2}));
  EXPECT_THAT(history("Step-1", "Node 3 of Top", "U1"), ElementsAre(1, 1));
  EXPECT_THAT(descriptions("Step-2"),
              ElementsAre("Base State", "Mode 1: Buckling Factor = 48", "Mode 2: Buckling Factor = 106"));
  EXPECT_THAT(history("Step-2", "Node 3 of Top", "U1"), ElementsAre(0, 2, 48, 3, 106, 4));
  EXPECT_THAT(history("Step-3", "Node 3 of Top", "U1"), ElementsAre(1, 5));
}

TEST_F(PrintedTest, SteadyStatesHaveARealAndAnImaginaryPart) {
  const auto factors = [](double frequency) {
    return fmt::format(
        "P A R T I C I P A T I O N   F A C T O R S   F O R   F R E Q U E N C Y   {:19.13E} (CYCLES/TIME)\n\n"
        " MODE NO    FREQUENCY               FACTOR\n\n      1   0.5000000E+01   0.1250000E+00  -0.2500000E+00\n",
        frequency);
  };
  importPrinted(
      factors(1) + displacement(1, 10) + displacement(1, 20) + factors(9) + displacement(9, 30) + displacement(9, 40),
      kSteadyState);
  EXPECT_THAT(frameValues("Step-1"), ElementsAre(1, 9));
  EXPECT_THAT(history("Step-1", "Node 3 of Top", "U1"), ElementsAre(1, 10, 9, 30));
  EXPECT_THAT(history("Step-1", "Node 3 of Top", "U1_IM"), ElementsAre(1, 20, 9, 40));
  EXPECT_THAT(history("Step-1", "Whole Model", "FACTOR1_IM"), ElementsAre(1, -0.25F, 9, -0.25F));
  EXPECT_NO_THROW(fieldOf(*Reader(output_).step("Step-1"), "U_PRINT_IM"));
}

TEST_F(PrintedTest, BucklingFactorsAreMovedToTheStepThatAskedForThem) {
  // The solver writes them under the number of its first step.
  import(twoBars() + temperature({.step = 2, .counter = 2, .value = 2}) +
             temperature({.counter = 3, .value = 48, .kind = 4}) + temperature({.step = 4, .counter = 4, .value = 3}) +
             kEnd,
         kStatic + kStatic + kBuckle + kStatic);
  EXPECT_THAT(steps(), ElementsAre("Step-1", "Step-2", "Step-3", "Step-4"));
  EXPECT_THAT(descriptions("Step-1"), IsEmpty());
  EXPECT_THAT(descriptions("Step-3"), ElementsAre("Mode 1: Buckling Factor = 48"));
}

TEST_F(PrintedTest, SumsAndSectionsBelongToTheirSet) {
  importPrinted(
      table("total force (fx,fy,fz) for set TOP", 1, "       -3.0E+00 -8.0E+00 -4.0E+01\n") +
          table("statistics for surface set SIDE", 1,
                "\n   total surface force (fx,fy,fz) and moment about the origin(mx,my,mz)\n\n"
                "   1.0E+00  2.0E+00  3.0E+00  4.0E+00  5.0E+00  6.0E+00\n"
                "\n   area, normal force (+ = tension), shear force (size), torque and bending moment (size)\n\n"
                "   7.0E+00  8.0E+00  9.0E+00  1.0E+01  1.1E+01\n"),
      kStatic, temperature({}));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_THAT(step->historyRegions(), ElementsAre("Set Top", "Surface SIDE"));
  EXPECT_EQ(step->historyRegion("Set Top").info.set, "Top");
  EXPECT_THAT(history("Step-1", "Set Top", "RF3"), ElementsAre(1, -40));
  EXPECT_THAT(history("Step-1", "Surface SIDE", "SOM1"), ElementsAre(1, 4));
  EXPECT_THAT(history("Step-1", "Surface SIDE", "SOAREA"), ElementsAre(1, 7));
}

TEST_F(PrintedTest, LargeSetsHaveNoHistoriesAndALineSaysSo) {
  run_.historyLimit = 1;
  importPrinted(stress(1, 7) + displacement(1, 2), kStatic, temperature({}));
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.dat:2: warning: stresses of bars with 2 rows, more than 1, become "
                                              "fields without histories")));
  EXPECT_THAT(Reader(output_).step("Step-1")->historyRegions(), ElementsAre("Node 3 of Top"));
  EXPECT_NO_THROW(fieldOf(*Reader(output_).step("Step-1"), "S_IP"));
}

const std::string kMass =
    table("total mass for set ALL", 1, "  2.0E+00\n") +
    table("total mass moment of inertia (xx,yy,zz,xy,xz,yz) for set ALL", 1, "  1.0  2.0  4.0  8.0  16.0  32.0\n") +
    table("center of gravity for set ALL", 1, "  0.5  0.25  0.125\n");
const std::string kTwoElements = "*ELEMENT, TYPE=T3D2, ELSET=all\n10, 1, 2\n20, 2, 3\n";

TEST_F(PrintedTest, MassOfTheWholeModelIsTakenFromTheTables) {
  importPrinted(kMass, kTwoElements + kStatic + kStatic, temperature({}) + temperature({.step = 2, .counter = 2}));
  const odbstore::StepInfo info = Reader(output_).step("Step-1")->info();
  EXPECT_EQ(info.mass, 2);
  EXPECT_THAT(info.massCenter, ElementsAre(0.5, 0.25, 0.125));
  // Moments of inertia are sums of second moments; products change their sign.
  EXPECT_THAT(info.inertiaAboutOrigin, ElementsAre(6, 5, 3, -8, -16, -32));
  EXPECT_THAT(info.inertiaAboutCenter, IsEmpty());
  EXPECT_EQ(Reader(output_).step("Step-2")->info().mass, -1);
}

TEST_F(PrintedTest, MassOfASetIsNotThatOfTheModel) {
  importPrinted(kMass, kTwoElements + "*ELEMENT, TYPE=T3D2, ELSET=more\n30, 1, 3\n" + kStatic, temperature({}));
  EXPECT_EQ(Reader(output_).step("Step-1")->info().mass, -1);
  EXPECT_THAT(history("Step-1", "Set all", "EMAS"), ElementsAre(1, 2));
}

TEST_F(PrintedTest, PointsOfContactFacesMakeAFieldOnly) {
  importPrinted(
      "\n contact stress (slave element+face,press,tang1,tang2) for all contact elements and time 0.1000000E+01\n\n"
      "        10          4  5.0  0.0  0.0\n        10          4  6.0  0.0  0.0\n"
      "        20          3  7.0  0.0  0.0\n",
      kStatic, temperature({}));
  const auto step = Reader(output_).step("Step-1");
  const odbstore::StoredField& field = fieldOf(*step, "CSTR_IP");
  EXPECT_THAT(field.blocks[0].location()->elementLabels(), ElementsAre(10, 10, 20));
  EXPECT_THAT(field.blocks[0].location()->integrationPoints(), ElementsAre(1, 2, 1));
  EXPECT_THAT(step->historyRegions(), IsEmpty());
}

TEST_F(PrintedTest, SelectionsTakePrintedFieldsToo) {
  request_.selection.fields = {"s_ip"};
  importPrinted(stress(0.5, 1) + stress(1, 2) + displacement(1, 2), kStatic,
                temperature({.value = 0.5}) + temperature({.increment = 2, .counter = 2, .value = 1}));
  const auto step = Reader(output_).step("Step-1");
  ASSERT_EQ(step->fields().size(), 1U);
  EXPECT_EQ(step->fields()[0].name, "S_IP");
}

TEST_F(PrintedTest, AStepOfHistoriesAloneCanBeSelected) {
  request_.selection.steps = {2};
  importPrinted(displacement(1, 1) + table("total volume for set BARS", 2, "  4.0\n"), kStatic + kStatic,
                temperature({.value = 1}));
  EXPECT_THAT(steps(), ElementsAre("Step-2"));
  EXPECT_THAT(frameValues("Step-2"), IsEmpty());
  EXPECT_THAT(history("Step-2", "Set bars", "EVOL"), ElementsAre(1, 4));
}

TEST_F(PrintedTest, ATableWithoutRowsOfPlacesMakesNoField) {
  importPrinted(displacement(0.5, 2) + table("displacements (vx,vy,vz) for set TOP", 1, "TOTAL  1.0  2.0  3.0\n"),
                kStatic, temperature({.value = 0.5}) + temperature({.increment = 2, .counter = 2, .value = 1}));
  EXPECT_THAT(history("Step-1", "Node 3 of Top", "U1"), ElementsAre(0.5F, 2.0F));
}

TEST_F(PrintedTest, NamesOfSetsAreTextWhateverIsInThem) {
  importPrinted(table(std::string("total volume for set S\0\xE4", 24), 1, "  4.0\n"), kStatic, temperature({}));
  EXPECT_THAT(Reader(output_).step("Step-1")->historyRegions(), ElementsAre("Set S \u00E4"));
}

TEST_F(PrintedTest, ADamagedRowCostsItsTableAndNothingElse) {
  std::string text = stress(1, 7);
  text.replace(text.find("  2.0  3.0"), 5, "  2,0");
  importPrinted(displacement(1, 2) + text, kStatic, temperature({}));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_THROW(fieldOf(*step, "S_IP"), std::runtime_error);
  EXPECT_THAT(step->historyRegions(), ElementsAre("Node 3 of Top"));
  EXPECT_THAT(warnings_,
              ElementsAre(EndsWith("job.dat:8: warning: this is not a row of stresses, and the table is left out")));
  std::filesystem::remove(output_);
  EXPECT_THAT(failure(twoBars() + temperature({}) + kEnd, kSets + kStatic, true),
              EndsWith("job.dat:8: error: this is not a row of stresses, and the table is left out"));
}

TEST_F(PrintedTest, ATableThatIsCutOffIsLeftOut) {
  const std::string text = stress(0.5, 1) + stress(1, 2);
  const ImportSummary summary =
      importPrinted(text.substr(0, text.size() - 30), kStatic,
                    temperature({.value = 0.5}) + temperature({.increment = 2, .counter = 2, .value = 1}));
  EXPECT_EQ(summary.cutOffBehind, "step 1, time 1");
  EXPECT_THAT(fieldOf(*Reader(output_).step("Step-1"), "S_IP").frames(), ElementsAre(0));
  EXPECT_THAT(warnings_, ElementsAre(HasSubstr("job.dat:")));
  run_.printed = writeText(directory_, "job.dat", text.substr(0, text.size() - 30));
  std::filesystem::remove(output_);
  EXPECT_THAT(failure(twoBars() + temperature({}) + kEnd, kSets + kStatic, true), HasSubstr("job.dat:"));
}

TEST_F(PrintedTest, TablesThatAreNotKnownAreNamedOnce) {
  const std::string ghosts = table("ghosts for set TOP", 1, "  1  2.0\n");
  importPrinted(" Modal Assurance Criterium\n\n  0.6927E+00\n" + ghosts + ghosts, kStatic, temperature({}));
  EXPECT_THAT(Reader(output_).step("Step-1")->historyRegions(), IsEmpty());
  EXPECT_THAT(warnings_,
              ElementsAre(EndsWith("job.dat:5: warning: tables of \"ghosts\" are not known, and are left out")));
}

}  // namespace
}  // namespace importers::calculix
