// Mass of the deck's model in the steps of the database.
#include <gmock/gmock.h>

#include "import_fixture.h"

namespace importers::calculix {
namespace {

using namespace frd_text;
using odbstore::Reader;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Two points on the x axis, at 1 and at 4.
const std::string kPoints =
    "*NODE\n1,1,0,0\n3,4,0,0\n*ELEMENT,TYPE=MASS,ELSET=A\n10,1\n*ELEMENT,TYPE=MASS,ELSET=B\n20,3\n"
    "*MASS,ELSET=A\n4\n*MASS,ELSET=B\n2\n*STEP\nfirst\n*END STEP\n*STEP\n*END STEP\n";

const std::string kTwoSteps = twoBars() + temperature({}) + temperature({.step = 2, .counter = 2}) + kEnd;

TEST_F(ImportTest, EveryStepHasTheMassOfTheModel) {
  import(kTwoSteps, kPoints);
  const Reader reader(output_);
  for (const char* name : {"Step-1", "Step-2"}) {
    const odbstore::StepInfo info = reader.step(name)->info();
    EXPECT_EQ(info.mass, 6);
    EXPECT_THAT(info.massCenter, ElementsAre(DoubleNear(2, 1e-12), 0, 0));
    // 4 at a distance of 1 and 2 at a distance of 2.
    EXPECT_THAT(info.inertiaAboutCenter, ElementsAre(0, DoubleNear(12, 1e-12), DoubleNear(12, 1e-12), 0, 0, 0));
    EXPECT_THAT(info.inertiaAboutOrigin, ElementsAre(0, DoubleNear(36, 1e-12), DoubleNear(36, 1e-12), 0, 0, 0));
  }
  EXPECT_EQ(reader.step("Step-1")->info().description, "first");
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(ImportTest, MassThatIsNotWantedIsNotMade) {
  run_.withMass = false;
  // Nor are numbers read that serve mass alone.
  import(kTwoSteps, kPoints + "*NODE\n5,here\n*MASS,ELSET=A\nmuch\n");
  const odbstore::StepInfo info = Reader(output_).step("Step-1")->info();
  EXPECT_EQ(info.mass, -1);
  EXPECT_THAT(info.massCenter, IsEmpty());
  EXPECT_THAT(info.inertiaAboutCenter, IsEmpty());
  EXPECT_THAT(info.inertiaAboutOrigin, IsEmpty());
}

TEST_F(ImportTest, StepsHaveNoMassWhereAPartOfItIsMissing) {
  import(kTwoSteps, kPoints + "*ELEMENT,TYPE=T3D2,ELSET=Bars\n30,1,3\n*MATERIAL,NAME=M\n*DENSITY\n1\n");
  EXPECT_EQ(Reader(output_).step("Step-1")->info().mass, -1);
  EXPECT_THAT(warnings_, testing::Contains(HasSubstr("elements of Bars (T3D2 30) have no section")));
}

}  // namespace
}  // namespace importers::calculix
