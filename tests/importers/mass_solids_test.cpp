// Bodies of solid elements against their closed forms.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "mass_deck.h"

namespace importers::calculix {
namespace {

using std::numbers::pi;

constexpr double kExact = 1e-12;
const std::string kSection = "*SOLID SECTION,ELSET=E,MATERIAL=M\n";

class SolidTest : public MassTest, public testing::WithParamInterface<const char*> {};

// Moments of a box of the sides a, b, c about its centre.
std::array<double, 6> boxInertia(double mass, double a, double b, double c) {
  return {mass * (b * b + c * c) / 12, mass * (a * a + c * c) / 12, mass * (a * a + b * b) / 12, 0, 0, 0};
}

TEST_P(SolidTest, ABlockIsExact) {
  const auto place = [](const Point& p) { return Point{1 + 2 * p[0], -3 + 0.5 * p[1], 2 + 3 * p[2]}; };
  const StepMass found = mass(blockMesh(GetParam(), {2, 1, 3}, place) + material(7.8e-9) + kSection);
  const double m = 7.8e-9 * 2 * 0.5 * 3;
  expectMass(found, m, {2, -2.75, 3.5}, boxInertia(m, 2, 0.5, 3), kExact);
}

TEST_P(SolidTest, AFarBlockIsExact) {
  const auto place = [](const Point& p) { return Point{1e5 + p[0], 1e5 + p[1], p[2]}; };
  const StepMass found = mass(blockMesh(GetParam(), {1, 1, 1}, place) + material(2) + kSection);
  expectTensor(found.inertiaAboutCentre, boxInertia(2, 1, 1, 1), 1e-9);
}

// A sheared block: x = u + v/2, second moments of the unit cube 1/12.
TEST_P(SolidTest, ASkewBlockIsExact) {
  const auto shear = [](const Point& p) { return Point{p[0] + 0.5 * p[1], p[1], p[2]}; };
  const StepMass found = mass(blockMesh(GetParam(), {1, 2, 1}, shear) + material(3) + kSection);
  const double xx = 1.25 * 3 / 12, yy = 3.0 / 12, zz = 3.0 / 12, xy = 0.5 * 3 / 12;
  expectMass(found, 3, {0.75, 0.5, 0.5}, {yy + zz, xx + zz, xx + yy, -xy, 0, 0}, kExact);
}

// A frustum whose square goes from the side 2 at z = 0 to 1 at z = 3: sides s(z) = 2 - z/3 = s, z = 3 (2 - s).
TEST_F(SolidTest, AFrustumOfBricksIsExact) {
  const auto taper = [](const Point& p) {
    const double side = 2 - p[2];
    return Point{side * (p[0] - 0.5), side * (p[1] - 0.5), 3 * p[2]};
  };
  for (const std::string type : {"C3D8I", "C3D20R"}) {
    const StepMass found = mass(blockMesh(type, {2, 2, 2}, taper) + material(1) + kSection);
    const double volume = 7.0;                                      // ∫ s² dz = 3 ∫ s² ds from 1 to 2
    const double z = 9 * (14.0 / 3 - 3.75) / volume;                // 9 ∫ (2 - s) s² ds
    const double zz = 27 * (28.0 / 3 - 15 + 6.2) - volume * z * z;  // 27 ∫ (2 - s)² s² ds
    const double xx = 31.0 / 20;                                    // 3 ∫ s⁴/12 ds
    expectMass(found, volume, {0, 0, z}, {xx + zz, xx + zz, 2 * xx, 0, 0, 0}, kExact);
  }
}

INSTANTIATE_TEST_SUITE_P(Types, SolidTest,
                         testing::Values("C3D4", "C3D6", "C3D8", "C3D8R", "C3D10", "C3D10T", "C3D15", "C3D20",
                                         "C3D20R"));

// A tube of the radii 1 and 2 and the height 3 around z.
TEST_F(SolidTest, ATubeOfCurvedElementsComesNear) {
  const auto bend = [](const Point& p) {
    const double angle = 2 * pi * p[1];
    return Point{(1 + p[0]) * std::cos(angle), (1 + p[0]) * std::sin(angle), 3 * p[2]};
  };
  const double m = 5 * pi * (4 - 1) * 3;
  const double axial = m * (4 + 1) / 2, transverse = m * (3 * (4 + 1) + 9) / 12;
  for (const std::string type : {"C3D20", "C3D15", "C3D10"}) {
    const StepMass found = mass(blockMesh(type, {1, 32, 1}, bend) + material(5) + kSection);
    expectMass(found, m, {0, 0, 1.5}, {transverse, transverse, axial, 0, 0, 0}, 1e-5);
  }
}

// An eighth of a ball of the radius 1: cubes drawn to spheres, whose kinks lie between the tetrahedra.
TEST_F(SolidTest, AnEighthOfABallComesNear) {
  const auto round = [](const Point& p) {
    const double size = std::hypot(p[0], p[1], p[2]);
    const double scale = size > 0 ? std::max({p[0], p[1], p[2]}) / size : 0.0;
    return Point{scale * p[0], scale * p[1], scale * p[2]};
  };
  const StepMass found = mass(blockMesh("C3D10", {6, 6, 6}, round) + material(1) + kSection);
  const double m = pi / 6;
  const double own = m * (2.0 / 5 - 2 * 9.0 / 64);    // 2/5 m r² about each axis, moved to the centre 3/8 r
  const double product = -(1.0 / 15 - m * 9.0 / 64);  // ∫ x y = r⁵/15
  expectMass(found, m, {0.375, 0.375, 0.375}, {own, own, own, product, product, product}, 2e-4);
}

}  // namespace
}  // namespace importers::calculix
