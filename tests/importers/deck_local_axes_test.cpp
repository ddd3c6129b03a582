// Which results a run writes in local axes, as tried with the solver.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/element_kinds.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Fields = std::set<std::string>;

class DeckLocalAxesTest : public testing::Test {
 protected:
  Deck read(const std::string& text) {
    return readDeck(writeText(directory_, "job.inp", text), [](const base::Diagnostic&) {});
  }

  // Of a deck with a step for each text.
  std::vector<Fields> fieldsOf(const std::vector<std::string>& steps) {
    std::string text;
    for (const std::string& step : steps) text += "*STEP\n*STATIC\n" + step + "*END STEP\n";
    return read(text).localAxes.fields;
  }

  TemporaryDirectory directory_;
};

TEST_F(DeckLocalAxesTest, FieldsAreGlobalUnlessTheirRequestSaysOtherwise) {
  EXPECT_THAT(fieldsOf({"*NODE FILE\nU,RF\n*EL FILE\nS,E\n"}), ElementsAre(Fields{}));
  EXPECT_THAT(fieldsOf({"*NODE FILE,GLOBAL=YES\nU\n"}), ElementsAre(Fields{}));
  EXPECT_THAT(fieldsOf({"*NODE FILE,global=no\nu,RF\n*EL FILE,GLOBAL=NO\nS,E\n"}),
              ElementsAre(Fields{"E", "RF", "S", "U"}));
  EXPECT_THAT(fieldsOf({"*NODE OUTPUT,GLOBAL=NO\nU\n*ELEMENT OUTPUT,GLOBAL=NO\nS\n"}), ElementsAre(Fields{"S", "U"}));
}

TEST_F(DeckLocalAxesTest, EveryRequestDecidesAboutItsOwnFields) {
  EXPECT_THAT(fieldsOf({"*NODE FILE,GLOBAL=NO\nU\n*NODE FILE\nRF\n"}), ElementsAre(Fields{"U"}));
  EXPECT_THAT(fieldsOf({"*NODE FILE\nRF\n*NODE FILE,GLOBAL=NO\nU\n"}), ElementsAre(Fields{"U"}));
  EXPECT_THAT(fieldsOf({"*NODE FILE,GLOBAL=NO\nU\n*NODE FILE\nU\n"}), ElementsAre(Fields{}));
  EXPECT_THAT(fieldsOf({"*NODE FILE\nU\n*EL FILE,GLOBAL=NO\nS\n*EL FILE\nE\n"}), ElementsAre(Fields{"S"}));
}

TEST_F(DeckLocalAxesTest, RequestsHoldUntilOneOfTheirKindReplacesThem) {
  const std::string local = "*NODE FILE,GLOBAL=NO\nU\n*EL FILE,GLOBAL=NO\nS\n";
  EXPECT_THAT(fieldsOf({local, "", "*NODE FILE\nU\n"}), ElementsAre(Fields{"S", "U"}, Fields{"S", "U"}, Fields{"S"}));
  EXPECT_THAT(fieldsOf({local, "*EL FILE\nE\n", "*EL FILE\nS\n"}),
              ElementsAre(Fields{"S", "U"}, Fields{"U"}, Fields{"U"}));
}

TEST_F(DeckLocalAxesTest, OnlyVectorsAndTensorsHaveAxes) {
  EXPECT_THAT(fieldsOf({"*NODE FILE,GLOBAL=NO\nNT,U,WHATEVER,\n"}), ElementsAre(Fields{"U"}));
}

TEST_F(DeckLocalAxesTest, AnswersByStepAndKey) {
  const DeckLocalAxes axes = read("*STEP\n*NODE FILE,GLOBAL=NO\nU\n*END STEP\n").localAxes;
  EXPECT_TRUE(axes.has(1, "U"));
  EXPECT_FALSE(axes.has(1, "S"));
  EXPECT_FALSE(axes.has(0, "U"));
  EXPECT_FALSE(axes.has(2, "U"));
}

TEST_F(DeckLocalAxesTest, KnowsTransformedNodesAndOrientedElements) {
  const Deck deck = read(
      "*NODE,NSET=All\n1,\n2,\n3,\n4,\n5,\n*NSET,NSET=TOP\n3,1\n*TRANSFORM,NSET=top,TYPE=C\n0,0,0,0,0,1\n"
      "*TRANSFORM,NSET=REST\n1,0,0,0,1,0\n*NSET,NSET=REST\n1,5\n*ELEMENT,TYPE=S3,ELSET=A\n7,1,2,3\n8,2,3,4\n"
      "*ELEMENT,TYPE=S3,ELSET=B\n9,2,3,5\n*ELEMENT,TYPE=S3,ELSET=C\n10,1,3,5\n*ELSET,ELSET=LAST\n8\n"
      "*SHELL SECTION,ELSET=A,MATERIAL=M,ORIENTATION=O\n1.\n*SHELL SECTION,ELSET=B,COMPOSITE\n1.,,M\n1.,,M,O\n"
      "*SHELL SECTION,ELSET=C,MATERIAL=M\n1.\n*SHELL SECTION,ELSET=LAST,MATERIAL=M\n1.\n");
  EXPECT_THAT(deck.localAxes.nodes, ElementsAre(1, 3, 5));
  EXPECT_THAT(deck.localAxes.elements, ElementsAre(7, 9));
  EXPECT_THAT(deck.localAxes.fields, IsEmpty());
}

TEST(ElementKindTest, SpringsAndTheirLikeHaveNoTensors) {
  for (const char* type : {"SPRINGA", "SPRING1", "SPRING2", "DASHPOTA", "GAPUNI", "DCOUP3D", "MASS", "D"}) {
    EXPECT_FALSE(elementKind(type).hasTensors()) << type;
  }
  for (const char* type : {"C3D20R", "S8R", "B31", "T3D2", "CAX8", "M3D4", "F3D8", "U1", "U7", "XYZ"}) {
    EXPECT_TRUE(elementKind(type).hasTensors()) << type;
  }
}

}  // namespace
}  // namespace importers::calculix
