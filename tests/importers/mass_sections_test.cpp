// Shells, membranes, plane and axisymmetric elements, beams, trusses and points against their closed forms.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "mass_deck.h"

namespace importers::calculix {
namespace {

using std::numbers::pi;

constexpr double kExact = 1e-12;

class SectionTest : public MassTest {
 protected:
  static std::array<double, 6> inertia(double xx, double yy, double zz) { return {yy + zz, xx + zz, xx + yy, 0, 0, 0}; }
};

const auto kPlate = [](const Point& p) { return Point{2 * p[0], 3 * p[1], 1}; };

TEST_F(SectionTest, APlateIsABox) {
  for (const std::string type : {"S3", "S4", "S6", "S8", "M3D3", "M3D4", "M3D6", "M3D8"}) {
    const std::string section = type[0] == 'S' ? "*SHELL SECTION" : "*MEMBRANE SECTION";
    const StepMass found =
        mass(blockMesh(type, {2, 3, 1}, kPlate) + material(5) + section + ",ELSET=E,MATERIAL=M\n0.1\n");
    const double m = 5 * 2 * 3 * 0.1;
    expectMass(found, m, {1, 1.5, 1}, inertia(m * 4 / 12, m * 9 / 12, m * 0.01 / 12), kExact);
  }
}

TEST_F(SectionTest, AnOffsetMovesTheMiddleOfAShellBelowItsNodes) {
  const StepMass found =
      mass(blockMesh("S8", {1, 1, 1}, kPlate) + material(5) + "*SHELL SECTION,ELSET=E,MATERIAL=M,OFFSET=0.5\n0.2\n");
  EXPECT_NEAR(found.centre[2], 1 - 0.1, kExact);
}

TEST_F(SectionTest, LayersLieOverEachOther) {
  const StepMass found = mass(blockMesh("S8", {1, 1, 1}, kPlate) +
                              "*MATERIAL,NAME=light\n*DENSITY\n1\n*MATERIAL,NAME=heavy\n*DENSITY\n4\n"
                              "*SHELL SECTION,ELSET=E,COMPOSITE\n0.1,,LIGHT\n0.3,,HEAVY\n");
  const double m = 6 * (0.1 * 1 + 0.3 * 4);
  EXPECT_NEAR(found.mass, m, kExact * m);
  // The light layer reaches from -0.2 to -0.1, the heavy one from there to 0.2.
  EXPECT_NEAR(found.centre[2], 1 + (0.1 * -0.15 + 1.2 * 0.05) / 1.3, kExact);
}

// A spherical shell is thicker outside than inside, and so is its mass: 4/3 π (R³ - r³).
TEST_F(SectionTest, ACurvedShellHasTheVolumeOfASolid) {
  const auto round = [](const Point& p) {
    const double angle = pi / 2 * p[0], height = std::sin(pi / 3 * p[1]), radius = std::cos(pi / 3 * p[1]);
    return Point{radius * std::cos(angle), radius * std::sin(angle), height};
  };
  const StepMass found =
      mass(blockMesh("S8", {8, 8, 1}, round) + material(1) + "*SHELL SECTION,ELSET=E,MATERIAL=M\n0.4\n");
  // The area of a zone of the unit sphere is its height times the angle around.
  const double expected = pi / 2 * std::sin(pi / 3) * (1.2 * 1.2 * 1.2 - 0.8 * 0.8 * 0.8) / 3;
  EXPECT_NEAR(found.mass, expected, 2e-4 * expected);
}

// A plate 2 x 3 whose thickness goes from 0.1 to 0.3 along x, all of it below its nodes: t = 0.1 + 0.1 x.
TEST_F(SectionTest, AThicknessMayVaryFromNodeToNode) {
  const std::string mesh = blockMesh("S4", {1, 1, 1}, kPlate);
  const StepMass found = mass(mesh + "*NSET,NSET=THICK\n2,3\n" + material(5) +
                              "*NODAL THICKNESS\n1,0.1\n4,0.1\n2,5.\nthick,0.3\n"
                              "*SHELL SECTION,ELSET=E,MATERIAL=M,NODAL THICKNESS,OFFSET=0.5\n7.\n");
  const double m = 5 * 3 * 0.4;                                  // 3 ∫ t dx
  const double x = 5 * 3 * (0.2 + 0.8 / 3) / m;                  // 3 ∫ x t dx
  const double z = 1 - 5 * 3 * (0.027 - 0.001) / (6 * 0.1) / m;  // 3 ∫ t²/2 dx
  EXPECT_NEAR(found.mass, m, kExact);
  EXPECT_NEAR(found.centre[0], x, kExact);
  EXPECT_NEAR(found.centre[1], 1.5, kExact);
  EXPECT_NEAR(found.centre[2], z, kExact);
}

TEST_F(SectionTest, PlaneElementsHaveTheirThicknessOnBothSides) {
  const auto flat = [](const Point& p) { return Point{1 + 2 * p[0], 3 * p[1], 0}; };
  for (const std::string type : {"CPS3", "CPS4", "CPS6", "CPS8", "CPE3", "CPE4", "CPE6", "CPE8"}) {
    const std::string mesh = blockMesh(type, {1, 2, 1}, flat) + material(5) + "*SOLID SECTION,ELSET=E,MATERIAL=M\n";
    const double m = 5 * 2 * 3 * 0.5;
    expectMass(mass(mesh + "0.5\n"), m, {2, 1.5, 0}, inertia(m * 4 / 12, m * 9 / 12, m * 0.25 / 12), kExact);
    EXPECT_NEAR(mass(mesh).mass, 2 * m, kExact * m) << "the thickness is 1 where none is given";
  }
}

TEST_F(SectionTest, AxisymmetricElementsGoAllTheWayAround) {
  const auto ring = [](const Point& p) { return Point{1 + p[0], 4 + 3 * p[1], 0}; };
  const double m = 5 * pi * (4 - 1) * 3;
  const double around = m * (4 + 1) / 4;
  for (const std::string type : {"CAX3", "CAX4", "CAX6", "CAX8"}) {
    const StepMass found = mass(blockMesh(type, {2, 2, 1}, ring) + material(5) + "*SOLID SECTION,ELSET=E,MATERIAL=M\n");
    expectMass(found, m, {0, 5.5, 0}, inertia(around, m * 9 / 12, around), kExact);
  }
}

// A bar from (1,2,3) along x, 10 long.
std::string bar(const std::string& type) {
  const bool hasMiddle = type == "B32" || type == "B32R" || type == "T3D3";
  return "*NODE\n1,1,2,3\n2,6.,2.,3.\n3,11.D0,2.,.3D1\n*ELEMENT,ELSET=E,TYPE=" + type +
         (hasMiddle ? "\n1,1,2,3\n" : "\n1,1,2\n2,2,3\n") + material(2);
}

TEST_F(SectionTest, ARoundBeamIsACylinder) {
  for (const std::string type : {"B32", "B32R"}) {
    const StepMass found = mass(bar(type) + "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=CIRC\n0.6\n0,1,0\n");
    const double m = 2 * pi * 0.09 * 10;
    expectMass(found, m, {6, 2, 3}, inertia(m * 100 / 12, m * 0.09 / 4, m * 0.09 / 4), kExact);
  }
}

TEST_F(SectionTest, ARectangleIsTurnedByItsFirstDirection) {
  const double m = 2 * 0.6 * 0.2 * 10;
  for (const std::string type : {"B31", "B31R", "B21", "B32"}) {
    const std::string beam = bar(type) + "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=RECT\n0.6,0.2\n";
    const std::array<double, 6> flat = inertia(m * 100 / 12, m * 0.36 / 12, m * 0.04 / 12);
    expectMass(mass(beam + "0,1,0\n"), m, {6, 2, 3}, flat, kExact);
    // Made normal to the axis first.
    expectMass(mass(beam + "1,1,0\n"), m, {6, 2, 3}, flat, kExact);
    // -z where none is given.
    expectMass(mass(beam), m, {6, 2, 3}, inertia(m * 100 / 12, m * 0.04 / 12, m * 0.36 / 12), kExact);
  }
}

TEST_F(SectionTest, OffsetsMoveABeamAgainstItsDirections) {
  const std::string parameters = "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=RECT,OFFSET1=0.5,OFFSET2=-1.\n";
  const StepMass found = mass(bar("B31") + parameters + "0.6,0.2\n0,1,0\n");
  EXPECT_NEAR(found.centre[1], 2 - 0.3, kExact);
  EXPECT_NEAR(found.centre[2], 3 + 0.2, kExact);
}

// A cone of elliptical section.
TEST_F(SectionTest, ABeamMayTaper) {
  const StepMass found = mass(bar("B32") + "*NODAL THICKNESS\n1,.2,.1\n2,.4,.2\n3,.6,.3\n" +
                              "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=CIRC,NODAL THICKNESS\n9.,9.\n0,1,0\n");
  // π/8 d² along the axis, d from 0.2 to 0.6.
  const double m = 2 * pi / 8 * 10 * (0.04 + 0.12 + 0.36) / 3;
  EXPECT_NEAR(found.mass, m, kExact);
  // Across: ∫ π a³ b/64 with b = a/2.
  const double y = 2 * pi / 128 * 10 * (std::pow(0.6, 5) - std::pow(0.2, 5)) / (5 * 0.4);
  EXPECT_NEAR(found.inertiaAboutCentre[0], y * 1.25, kExact);
}

TEST_F(SectionTest, APipeIsAHollowCylinder) {
  const StepMass found = mass(bar("B32R") + "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=PIPE\n0.5,0.2\n0,1,0\n");
  const double m = 2 * pi * (0.25 - 0.09) * 10;
  expectMass(found, m, {6, 2, 3}, inertia(m * 100 / 12, m * 0.34 / 4, m * 0.34 / 4), kExact);
}

// Walls +1: 0.01, +2: 0.02, -1: 0.03, -2: 0.04 of a box 0.5 x 0.3: the hole is 0.46 x 0.24 and lies at 0.01, 0.01.
TEST_F(SectionTest, ABoxHasAHole) {
  const StepMass found =
      mass(bar("B32R") + "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=BOX\n0.5,0.3,.01,.02,.03,.04\n0,1,0\n");
  const double hole = 0.46 * 0.24, area = 0.15 - hole;
  const double c = -hole * 0.01 / area;
  const double y = (0.15 * 0.25 - hole * 0.46 * 0.46) / 12 - hole * 1e-4 - area * c * c;
  const double z = (0.15 * 0.09 - hole * 0.24 * 0.24) / 12 - hole * 1e-4 - area * c * c;
  const double product = -hole * 1e-4 - area * c * c;
  std::array<double, 6> expected = inertia(20 * area * 100 / 12, 20 * y, 20 * z);
  expected[5] = -20 * product;
  expectMass(found, 20 * area, {6, 2 + c, 3 + c}, expected, kExact);
}

TEST_F(SectionTest, AGeneralSectionHasItsOwnMoments) {
  const std::string user = "*USER ELEMENT,TYPE=U1,NODES=2,INTEGRATION POINTS=2,MAXDOF=6\n";
  const StepMass found =
      mass(user + bar("U1") + "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=GENERAL\n0.4,0.03,0.01,0.02,0.8\n0,1,0\n");
  // Along the first direction, y, the section's second moment is ∫ y² = 0.03: the solver bends such a beam along y with
  // it.
  std::array<double, 6> expected = inertia(8 * 100 / 12.0, 20 * 0.03, 20 * 0.02);
  expected[5] = -20 * 0.01;
  expectMass(found, 8, {6, 2, 3}, expected, kExact);
}

// A quarter of a ring of the radius 4 (Pappus).
TEST_F(SectionTest, ACurvedBeamIsARing) {
  std::string text = "*NODE\n";
  std::string elements = "*ELEMENT,TYPE=B32,ELSET=E\n";
  for (int i = 0; i <= 16; ++i) {
    const double angle = pi / 2 * i / 16;
    text += fmt::format("{},{:.17g},{:.17g},0\n", i + 1, 4 * std::cos(angle), 4 * std::sin(angle));
    if (i % 2 == 0 && i < 16) elements += fmt::format("{},{},{},{}\n", i / 2 + 1, i + 1, i + 2, i + 3);
  }
  const StepMass found =
      mass(text + elements + material(3) + "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=CIRC\n1\n0,0,1\n");
  const double m = 3 * pi / 4 * 2 * pi;
  // The wall is 3/4 r² further out than the line of its centres: ∫ρ(x²+y²) = m (R² + 3/4 r²), r = 1/2.
  const double polar = m * (16 + 0.75 * 0.25);
  EXPECT_NEAR(found.mass, m, 1e-5 * m);
  EXPECT_NEAR(found.inertiaAboutOrigin[2], polar, 5e-5 * polar);
}

TEST_F(SectionTest, ATrussIsASquareBar) {
  const double m = 2 * 0.2 * 10;
  for (const std::string type : {"T3D2", "T2D2", "T3D3"}) {
    const StepMass found = mass(bar(type) + "*SOLID SECTION,ELSET=E,MATERIAL=M\n0.2\n");
    expectMass(found, m, {6, 2, 3}, inertia(m * 100 / 12, m * 0.2 / 12, m * 0.2 / 12), kExact);
  }
}

TEST_F(SectionTest, PointsHaveTheirMassEach) {
  const StepMass found = mass("*NODE\n1,1,0,0\n2,3,0,0\n*ELEMENT,TYPE=MASS,ELSET=P\n1,1\n2,2\n*MASS,ELSET=P\n5.\n");
  expectMass(found, 10, {2, 0, 0}, {0, 10, 10, 0, 0, 0}, kExact);
}

TEST_F(SectionTest, AMixedModelIsTheSumOfItsParts) {
  const StepMass found = mass(bar("B31") + "*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=RECT\n0.5\n" +
                              "*ELEMENT,TYPE=MASS,ELSET=P\n10,3\n*MASS,ELSET=P\n5.\n"
                              "*ELEMENT,TYPE=SPRINGA,ELSET=SP\n11,1,3\n*SPRING,ELSET=SP\n\n100.\n"
                              "*ELEMENT,TYPE=GAPUNI,ELSET=G\n12,1,3\n");
  EXPECT_NEAR(found.mass, 10, kExact * 10);
  EXPECT_NEAR(found.centre[0], (5 * 6 + 5 * 11) / 10.0, 1e-11);
}

}  // namespace
}  // namespace importers::calculix
