// Which mass a deck has, and when it has none.
#include "importers/calculix/deck/mass_properties.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mass_deck.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

class MassPropertiesTest : public MassTest {
 protected:
  // A unit cube of the density 2 in the middle of lines of which the tests leave some out.
  static std::string cube(const std::string& type = "C3D8") {
    return blockMesh(type, {1, 1, 1}, [](const Point& p) { return p; });
  }
  void expectNone(const std::string& text, const std::string& warning) {
    warnings_.clear();
    EXPECT_FALSE(massOfText(text));
    EXPECT_THAT(warnings_, ElementsAre(EndsWith(warning)));
  }
};

const std::string kMaterial = "*MATERIAL,NAME=Steel\n*ELASTIC\n1,0\n*DENSITY\n2\n";
const std::string kSection = "*SOLID SECTION,ELSET=E,MATERIAL=STEEL\n";

TEST_F(MassPropertiesTest, ADeckWithoutDensitiesHasNone) {
  EXPECT_FALSE(massOfText(cube() + "*MATERIAL,NAME=STEEL\n*ELASTIC\n1,0\n" + kSection));
  EXPECT_FALSE(massOfText(""));
  EXPECT_FALSE(massOfText("*ELEMENT,TYPE=SPRING1,ELSET=S\n1,1\n*NODE\n1,0,0,0\n"));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(MassPropertiesTest, MaterialsMayFollowTheirSections) {
  EXPECT_NEAR(mass(kSection + cube() + kMaterial).mass, 2, 1e-12);
}

TEST_F(MassPropertiesTest, TheLastSectionOfAnElementCounts) {
  EXPECT_NEAR(mass(cube() + kMaterial + kSection + "*MATERIAL,NAME=LEAD\n*DENSITY\n5\n" +
                   "*SOLID SECTION,ELSET=E,MATERIAL=lead\n")
                  .mass,
              5, 1e-12);
}

TEST_F(MassPropertiesTest, TheLastPlaceOfANodeCounts) {
  // The upper side of the cube moved up by one.
  EXPECT_NEAR(mass(cube() + "*NODE\n5,0,0,2\n6,1,0,2\n7,1,1,2\n8,0,1,2\n" + kMaterial + kSection).mass, 4, 1e-12);
}

TEST_F(MassPropertiesTest, AnElementThatIsDefinedAgainCountsOnce) {
  EXPECT_NEAR(mass(cube() + "*ELEMENT,TYPE=C3D8,ELSET=E\n1,1,2,3,4,5,6,7,8\n" + kMaterial + kSection).mass, 2, 1e-12);
}

TEST_F(MassPropertiesTest, ADensityThatDependsOnTemperatureIsTheFirstOne) {
  const auto found = massOfText(cube() + "*MATERIAL,NAME=Steel\n*DENSITY\n2,20.\n3,100.\n4,200.\n" + kSection);
  EXPECT_NEAR(found.value().mass, 2, 1e-12);
  EXPECT_THAT(warnings_,
              ElementsAre(EndsWith("the density of Steel depends on temperature; masses are computed with the "
                                   "first one")));
}

TEST_F(MassPropertiesTest, WhatIsMissingIsNamed) {
  expectNone(cube() + kMaterial,
             "job.inp:10: warning: elements of E (C3D8 1) have no section, so the steps have no mass");
  expectNone(
      cube() + "*MATERIAL,NAME=OTHER\n*DENSITY\n1\n*MATERIAL,NAME=Steel\n*ELASTIC\n1,0\n" + kSection,
      "job.inp:18: warning: the section of E has the material Steel without a density, so the steps have no mass");
  expectNone(cube() + kMaterial + "*SOLID SECTION,ELSET=E,MATERIAL=TIN\n",
             ": warning: the section of E has the material \"TIN\", which is not known, so the steps have no mass");
  expectNone("*NODE\n1,0,0,0\n2,1,0,0\n*ELEMENT,TYPE=T3D2\n7,1,2\n" + kMaterial,
             "warning: elements in no set (T3D2 7) have no section, so the steps have no mass");
  expectNone("*NODE\n1,0,0,0\n2,1,0,0\n*ELEMENT,TYPE=T3D2,ELSET=E\n7,1,2\n" + kMaterial + kSection,
             ": warning: the section of E has no area, so the steps have no mass");
  expectNone(cube("S4") + kMaterial + "*SHELL SECTION,ELSET=E,MATERIAL=STEEL\n",
             ": warning: the section of E has no thickness, so the steps have no mass");
  expectNone(cube("S4") + kMaterial + "*SHELL SECTION,ELSET=E,MATERIAL=STEEL,NODAL THICKNESS\n0.1\n",
             ": warning: the section of E has no thickness at the node 1, so the steps have no mass");
}

TEST_F(MassPropertiesTest, BeamSectionsThatCannotBeToldAreNamed) {
  const std::string beam = "*NODE\n1,0,0,0\n2,1,0,0\n*ELEMENT,TYPE=B31,ELSET=E\n7,1,2\n" + kMaterial +
                           "*BEAM SECTION,ELSET=E,MATERIAL=STEEL";
  expectNone(beam + ",SECTION=BOX\n1,1,.1\n",
             ": warning: the section of E lacks dimensions, so the steps have no mass");
  expectNone(
      beam + ",SECTION=PIPE,NODAL THICKNESS\n1,1\n*NODAL THICKNESS\n1,1,1\n2,1,1\n",
      ": warning: the section of E is a PIPE whose thickness varies from node to node, so the steps have no mass");
  expectNone(beam + ",SECTION=Star\n1\n",
             ": warning: the section of E is of the kind \"STAR\", which is not known, so the steps have no mass");
}

TEST_F(MassPropertiesTest, ElementsThatAreNotWholeAreNamed) {
  expectNone(
      "*NODE\n1,0,0,0\n*ELEMENT,TYPE=T3D2,ELSET=E\n7,1,2\n" + kMaterial + "*SOLID SECTION,ELSET=E,MATERIAL=STEEL\n1\n",
      "warning: the node 2 of the element 7 does not exist, so the steps have no mass");
  expectNone(
      "*NODE\n1,0,0,0\n*ELEMENT,TYPE=T3D2,ELSET=E\n7,1\n" + kMaterial + "*SOLID SECTION,ELSET=E,MATERIAL=STEEL\n1\n",
      "warning: the element 7 has too few nodes, so the steps have no mass");
}

TEST_F(MassPropertiesTest, ElementsOfTheUserHaveAnUnknownMass) {
  for (const std::string type : {"U9", "U10"}) {
    expectNone("*USER ELEMENT,NODES=2,TYPE=" + type + "\n*NODE\n1,0,0,0\n2,1,0,0\n*ELEMENT,ELSET=E,TYPE=" + type +
                   "\n7,1,2\n" + kMaterial,
               "elements of E (" + type + " 7) have a type of unknown mass, so the steps have no mass");
  }
}

TEST_F(MassPropertiesTest, DamagedNumbersAreNamedWithTheirLine) {
  const auto failure = [this](const std::string& text) { return failureOf([&] { massOfText(text); }); };
  EXPECT_THAT(failure("*NODE\n1,0,0,x\n"), EndsWith("job.inp:2: error: \"x\" is not a number"));
  EXPECT_THAT(failure("*MATERIAL,NAME=A\n*DENSITY\nheavy\n"), EndsWith("job.inp:3: error: \"heavy\" is not a number"));
  EXPECT_THAT(failure("*SHELL SECTION,ELSET=E,MATERIAL=A,OFFSET=up\n"), EndsWith(":1: error: \"up\" is not a number"));
  EXPECT_THAT(failure("*BEAM SECTION,ELSET=E,MATERIAL=A\n1,thin\n"), EndsWith(":2: error: \"thin\" is not a number"));
}

}  // namespace
}  // namespace importers::calculix
