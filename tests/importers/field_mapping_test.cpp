#include "importers/calculix/frd/field_mapping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

FrdResult block(const std::string& name, std::vector<FrdComponent> components) {
  FrdResult result;
  result.name = name;
  result.components = std::move(components);
  return result;
}

FrdResult tensor(const std::string& name, const std::string& stem) {
  return block(
      name,
      {{stem + "XX", 4}, {stem + "YY", 4}, {stem + "ZZ", 4}, {stem + "XY", 4}, {stem + "YZ", 4}, {stem + "ZX", 4}});
}

FrdResult vector(const std::string& name, const std::string& stem) {
  return block(name, {{stem + "1", 2}, {stem + "2", 2}, {stem + "3", 2}});
}

std::vector<std::string> namesOf(const std::vector<MappedField>& fields) {
  std::vector<std::string> names;
  for (const MappedField& field : fields) names.push_back(field.name);
  return names;
}

TEST(FieldMapping, StressIsATensorWithAllInvariants) {
  const std::vector<MappedField> fields = mapResult(tensor("STRESS", "S"));
  ASSERT_THAT(namesOf(fields), ElementsAre("S"));
  EXPECT_TRUE(fields[0].isTensor());
  EXPECT_EQ(fields[0].info.type, 5);
  EXPECT_EQ(fields[0].info.description, "Stress components");
  EXPECT_THAT(fields[0].info.componentLabels, ElementsAre("11", "22", "33", "12", "13", "23"));
  EXPECT_THAT(fields[0].columns, ElementsAre(0, 1, 2, 3, 5, 4));
  EXPECT_THAT(fields[0].info.validInvariants, UnorderedElementsAre(1, 2, 3, 4, 5, 6, 7, 9, 10, 11));
  EXPECT_FALSE(fields[0].info.engineeringShear);
}

TEST(FieldMapping, SectionForcesAreTwoVectorsInTheBlockOfStresses) {
  const std::vector<MappedField> fields = mapResult(tensor("STRESS", "S"), StressContent::sectionForces);
  ASSERT_THAT(namesOf(fields), ElementsAre("SF", "SM"));
  for (const MappedField& field : fields) {
    EXPECT_EQ(field.info.type, 3);
    EXPECT_THAT(field.info.componentLabels, ElementsAre("1", "2", "3"));
    EXPECT_THAT(field.info.validInvariants, ElementsAre(8));
  }
  EXPECT_THAT(fields[0].columns, ElementsAre(0, 1, 2));
  EXPECT_THAT(fields[1].columns, ElementsAre(4, 5, 3)) << "the file has XY, YZ, ZX";
  EXPECT_THAT(namesOf(mapResult(tensor("STRESSI", "S"), StressContent::sectionForces)), ElementsAre("SF_IM", "SM_IM"));
  EXPECT_THAT(namesOf(mapResult(tensor("TOSTRAIN", "E"), StressContent::sectionForces)), ElementsAre("E"));
}

TEST(FieldMapping, StrainsAreTensorsWithPrincipalValues) {
  for (const auto& [name, field] : {std::pair{"TOSTRAIN", "E"}, {"MESTRAIN", "ME"}, {"THSTRAIN", "THE"}}) {
    const std::vector<MappedField> fields = mapResult(tensor(name, "E"));
    ASSERT_THAT(namesOf(fields), ElementsAre(field));
    EXPECT_EQ(fields[0].info.type, 5);
    EXPECT_FALSE(fields[0].info.engineeringShear) << "the solver gives tensor components";
    EXPECT_THAT(fields[0].info.validInvariants, UnorderedElementsAre(1, 2, 3, 9, 10, 11));
  }
}

TEST(FieldMapping, VectorsHaveThreeNumberedComponents) {
  for (const auto& [name, field] :
       {std::pair{"DISP", "U"}, {"VELO", "V"}, {"FORC", "RF"}, {"FLUX", "HFL"}, {"CURR", "CURR"}}) {
    const std::vector<MappedField> fields = mapResult(vector(name, "x"));
    ASSERT_THAT(namesOf(fields), ElementsAre(field));
    EXPECT_EQ(fields[0].info.type, 3);
    EXPECT_THAT(fields[0].info.componentLabels, ElementsAre("1", "2", "3"));
    EXPECT_THAT(fields[0].columns, ElementsAre(0, 1, 2));
    EXPECT_THAT(fields[0].info.validInvariants, ElementsAre(8));
  }
  EXPECT_EQ(mapResult(vector("DISP", "D"))[0].info.description, "Spatial displacement");
  EXPECT_EQ(mapResult(vector("VELO", "V"))[0].info.description, "Spatial velocity");
}

TEST(FieldMapping, ScalarsHaveNoComponents) {
  for (const auto& [name, field] :
       {std::pair{"NDTEMP", "NT"}, {"PE", "PEEQ"}, {"ENER", "ENER"}, {"ERROR", "S_ERROR"}, {"ELPOT", "ELPOT"}}) {
    const std::vector<MappedField> fields = mapResult(block(name, {{"whatever", 1}}));
    ASSERT_THAT(namesOf(fields), ElementsAre(field));
    EXPECT_EQ(fields[0].info.type, 2);
    EXPECT_THAT(fields[0].info.componentLabels, IsEmpty());
    EXPECT_THAT(fields[0].columns, ElementsAre(0));
  }
}

TEST(FieldMapping, ContactIsTwoTriplesThoughDeclaredATensor) {
  const std::vector<MappedField> fields = mapResult(
      block("CONTACT", {{"COPEN", 4}, {"CSLIP1", 4}, {"CSLIP2", 4}, {"CPRESS", 4}, {"CSHEAR1", 4}, {"CSHEAR2", 4}}));
  ASSERT_THAT(namesOf(fields), ElementsAre("CDIS", "CSTR"));
  EXPECT_EQ(fields[0].info.type, 3);
  EXPECT_THAT(fields[0].info.componentLabels, ElementsAre("COPEN", "CSLIP1", "CSLIP2"));
  EXPECT_THAT(fields[0].columns, ElementsAre(0, 1, 2));
  EXPECT_THAT(fields[1].info.componentLabels, ElementsAre("CPRESS", "CSHEAR1", "CSHEAR2"));
  EXPECT_THAT(fields[1].columns, ElementsAre(3, 4, 5));
}

TEST(FieldMapping, ImaginaryPartsAreNamedAfterTheirRealOnes) {
  EXPECT_THAT(namesOf(mapResult(vector("DISPI", "D"))), ElementsAre("U_IM"));
  const std::vector<MappedField> stress = mapResult(tensor("STRESSI", "S"));
  EXPECT_THAT(namesOf(stress), ElementsAre("S_IM"));
  EXPECT_EQ(stress[0].info.description, "Stress components, imaginary part");
  EXPECT_THAT(namesOf(mapResult(tensor("TOSTRAII", "E"))), ElementsAre("E_IM"))
      << "names have no more than eight letters";
  EXPECT_THAT(namesOf(mapResult(tensor("MESTRAII", "E"))), ElementsAre("ME_IM"));
  EXPECT_THAT(namesOf(mapResult(block("ERRORI", {{"STR(%)", 1}}))), ElementsAre("S_ERROR_IM"));
  EXPECT_THAT(namesOf(mapResult(block("XI", {{"X", 1}}))), ElementsAre("XI"));
}

TEST(FieldMapping, StateVariablesAreScalarsHoweverMany) {
  EXPECT_THAT(namesOf(mapResult(block("SDV", {{"SDV1", 1}, {"SDV2", 1}, {"SDV3", 1}}))),
              ElementsAre("SDV1", "SDV2", "SDV3"));
  EXPECT_EQ(mapResult(block("SDV", {{"SDV1", 1}, {"SDV2", 1}}))[1].columns, std::vector{1});
}

TEST(FieldMapping, MagnitudesAndPhasesStayApart) {
  const std::vector<MappedField> fields =
      mapResult(block("PDISP", {{"MAG1", 12}, {"MAG2", 12}, {"MAG3", 12}, {"PHA1", 12}, {"PHA2", 12}, {"PHA3", 12}}));
  EXPECT_THAT(namesOf(fields),
              ElementsAre("PDISP_MAG1", "PDISP_MAG2", "PDISP_MAG3", "PDISP_PHA1", "PDISP_PHA2", "PDISP_PHA3"));
  EXPECT_EQ(fields[5].info.type, 2);
  EXPECT_THAT(fields[5].columns, ElementsAre(5));
}

TEST(FieldMapping, MoreThanAVectorIsAVectorAndScalars) {
  const std::vector<MappedField> fields =
      mapResult(block("DISP", {{"D1", 2}, {"D2", 2}, {"D3", 2}, {"D4", 1}, {"D5", 1}}));
  EXPECT_THAT(namesOf(fields), ElementsAre("U", "DISP_D4", "DISP_D5"));
  EXPECT_THAT(fields[2].columns, ElementsAre(4));
}

TEST(FieldMapping, UnknownBlocksKeepTheirName) {
  EXPECT_THAT(namesOf(mapResult(tensor("ZZSTR", "S"))), ElementsAre("ZZSTR"));
  EXPECT_THAT(namesOf(mapResult(block("NEW", {{"A", 1}, {"B", 1}}))), ElementsAre("NEW_A", "NEW_B"));
  EXPECT_THAT(namesOf(mapResult(block("NEW", {{"V1", 2}, {"W2", 2}, {"V3", 2}}))),
              ElementsAre("NEW_V1", "NEW_W2", "NEW_V3"))
      << "three that do not belong together are no vector";
  EXPECT_EQ(mapResult(block("NEW", {{"SXX", 4}, {"SYY", 4}, {"SZZ", 4}, {"SXY", 4}, {"SZX", 4}, {"SYZ", 4}})).size(),
            6U)
      << "a tensor in another order is not guessed at";
}

TEST(FieldMapping, ComponentsThatShareANameAreNumbered) {
  EXPECT_THAT(namesOf(mapResult(block("NEW", {{"A", 1}, {"A", 1}, {"A_2", 1}, {"A", 1}}))),
              ElementsAre("NEW_A", "NEW_A_2", "NEW_A_2_2", "NEW_A_3"));
}

}  // namespace
}  // namespace importers::calculix
