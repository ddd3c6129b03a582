// What stresses, strains and displacements are called.
#include "importers/run/field_names.h"

#include <gmock/gmock.h>

#include "importers/run/field_meanings.h"
#include "importers_test.h"

namespace importers {
namespace {

using odbstore::FieldType;
using odbstore::Position;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct Named {
  const char* name;
  FieldType type;
  Position position;
  const char* description;
  const char* standardName;
};

constexpr Named kNamed[] = {
    {"stress", FieldType::tensor3dFull, Position::centroid, "Stress components", "S"},
    {"Cauchy_Stress", FieldType::tensor2dPlanar, Position::nodal, "Stress components", "S"},
    {"initial_stress", FieldType::tensor3dFull, Position::centroid, "Stress components", ""},
    {"sigma", FieldType::tensor3dFull, Position::nodal, "Stress components", ""},
    {"total_strain", FieldType::tensor3dFull, Position::centroid, "Strain components", "E"},
    {"plastic_strain", FieldType::tensor3dFull, Position::centroid, "Strain components", ""},
    {"DISPL", FieldType::vector, Position::nodal, "Spatial displacement", "U"},
    {"disp", FieldType::vector, Position::centroid, "Spatial displacement", ""},
    {"u", FieldType::vector, Position::nodal, "Spatial displacement", ""},
    {"stress", FieldType::vector, Position::nodal, "Result stress", ""},
    {"disp", FieldType::scalar, Position::nodal, "Result disp", ""},
    {"vonmises_stress", FieldType::scalar, Position::centroid, "Stress", ""},
    {"temp", FieldType::scalar, Position::nodal, "Result temp", ""},
};

TEST(FieldMeanings, GoByNameAndShape) {
  for (const Named& named : kNamed) {
    const FieldMeaning meaning = meaningOf(named.name, named.type, named.position);
    EXPECT_EQ(meaning.info.description, named.description) << named.name;
    EXPECT_EQ(meaning.standardName, named.standardName) << named.name;
    EXPECT_EQ(meaning.info.type, static_cast<int>(named.type));
  }
}

TEST(FieldMeanings, HaveTheInvariantsThatMakeSense) {
  const auto of = [](const char* name, FieldType type) { return meaningOf(name, type, Position::centroid).info; };
  EXPECT_THAT(of("stress", FieldType::tensor3dFull).validInvariants, ElementsAre(1, 2, 3, 4, 5, 6, 7, 9, 10, 11));
  EXPECT_THAT(of("strain", FieldType::tensor3dFull).validInvariants, ElementsAre(1, 2, 3, 9, 10, 11));
  EXPECT_THAT(of("v", FieldType::vector).validInvariants, ElementsAre(8));
  EXPECT_THAT(of("t", FieldType::scalar).validInvariants, IsEmpty());
  EXPECT_THAT(of("s", FieldType::tensor2dPlanar).componentLabels, ElementsAre("11", "22", "33", "12"));
  EXPECT_THAT(of("v", FieldType::vector).componentLabels, ElementsAre("1", "2", "3"));
}

class FieldNamesTest : public testing::Test {
 protected:
  void add(const std::string& name, FieldType type, Position position) {
    if (outline_.steps.empty()) outline_.steps.emplace_back();
    const FieldMeaning meaning = meaningOf(name, type, position);
    outline_.steps.back().fields.push_back({name, name, meaning.info, false, {}, position, meaning.standardName});
  }

  std::vector<std::string> names(const FieldNaming& naming = {}) {
    Outline outline = outline_;
    nameFields(outline, naming, "job", [this](const base::Diagnostic& said) { said_.push_back(base::textOf(said)); });
    std::vector<std::string> names;
    for (const OutlineStep& step : outline.steps) {
      for (const OutlineField& field : step.fields) names.push_back(field.name);
    }
    return names;
  }

  std::string refusal(const FieldNaming& naming) {
    return failureOf([&] { names(naming); });
  }

  Outline outline_;
  std::vector<std::string> said_;
};

TEST_F(FieldNamesTest, AreTheStandardOnesUnlessTheyAreKept) {
  add("disp", FieldType::vector, Position::nodal);
  add("stress", FieldType::tensor3dFull, Position::centroid);
  add("T", FieldType::scalar, Position::nodal);
  outline_.steps.push_back(outline_.steps.front());
  EXPECT_THAT(names(), ElementsAre("U", "S", "T", "U", "S", "T"));
  EXPECT_THAT(said_, ElementsAre("job: note: fields are imported under other names: disp as U, stress as S"));
  EXPECT_THAT(names({true, {}}), ElementsAre("disp", "stress", "T", "disp", "stress", "T"));
}

TEST_F(FieldNamesTest, AreLeftAloneWhereTwoFieldsCouldHaveThem) {
  add("stress", FieldType::tensor3dFull, Position::centroid);
  add("cauchy_stress", FieldType::tensor3dFull, Position::centroid);
  add("disp", FieldType::vector, Position::nodal);
  add("U", FieldType::scalar, Position::nodal);
  EXPECT_THAT(names(), ElementsAre("stress", "cauchy_stress", "disp", "U"));
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(FieldNamesTest, AreThoseThatTheUserWants) {
  add("sigma", FieldType::tensor3dFull, Position::centroid);
  add("disp", FieldType::vector, Position::nodal);
  add("displacement", FieldType::vector, Position::centroid);
  EXPECT_THAT(names({false, {{"SIGMA", "S"}}}), ElementsAre("S", "U", "displacement"));
  EXPECT_THAT(names({false, {{"u", "DEF"}}}), ElementsAre("sigma", "DEF", "displacement"));
  EXPECT_THAT(names({true, {{"disp", "U"}}}), ElementsAre("sigma", "U", "displacement"));
  EXPECT_THAT(refusal({false, {{"stress", "S"}}}), HasSubstr("job: error: there is no field stress to rename; "));
  add("tau", FieldType::tensor3dFull, Position::centroid);
  EXPECT_THAT(refusal({false, {{"sigma", "S"}, {"tau", "S"}}}), HasSubstr("two fields would be called S"));
}

TEST_F(FieldNamesTest, TellPositionsApart) {
  add("stress", FieldType::tensor3dFull, Position::integrationPoint);
  add("stress", FieldType::tensor3dFull, Position::centroid);
  add("stress", FieldType::tensor3dFull, Position::elementNodal);
  add("S_ELEM", FieldType::scalar, Position::nodal);
  EXPECT_THAT(names(), ElementsAre("S_IP", "S_ELEM_2", "S_ELNO", "S_ELEM"));
  add("stress", FieldType::tensor3dFull, Position::nodal);
  EXPECT_THAT(names(), ElementsAre("S_IP", "S_ELEM_2", "S_ELNO", "S_ELEM", "S"));
  EXPECT_THAT(names({false, {{"stress", "T"}}}), ElementsAre("T_IP", "T_ELEM", "T_ELNO", "S_ELEM", "T"));
}

}  // namespace
}  // namespace importers
