#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "odbaccess/odb_api.h"
#include "odbstore/upgrade.h"
#include "odbwriter/database_writer.h"
#include "support/old_database.h"
#include "support/temporary_directory.h"

namespace {

using odbstore::FieldInfo;
using odbstore::Owner;
using odbstore::OwnerKind;
using odbstore::Position;
using odbstore::SetKind;
using odbstore::SetMembers;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<float> floats(const float* numbers, int count) { return {numbers, numbers + count}; }

// A database with two instances of one part and fields of every kind in one frame.
class DatabaseTest : public testing::Test {
 protected:
  DatabaseTest() {
    odbstore::DatabaseWriter writer(path_);
    writer.setAssemblyName("ASSEMBLY");
    writer.addPart("P");
    writer.addInstance("P-1", "P");
    writer.addInstance("P-2", "P");
    writer.addSet({}, SetKind::element, "BOTH", std::vector<SetMembers>{{"P-1", {2}}, {"P-2", {1}}});
    writer.addSet({}, SetKind::node, "TIP", std::vector<SetMembers>{{"P-1", {3, 1, 3}}});
    writer.addSet({}, SetKind::node, "EMPTY", {});
    writer.addSet({OwnerKind::instance, "P-2"}, SetKind::element, "MINE", std::vector<SetMembers>{{"", {2}}});
    writer.addSet({OwnerKind::part, "P"}, SetKind::element, "EACH", std::vector<SetMembers>{{"", {1}}});
    const auto step = writer.addStep("Step-1", {});
    const int frame = writer.addFrame(step, {12, 0.5, "Increment 12"});

    const auto nodes = writer.addLocation({"P-1", Position::nodal, "", 0, ""}, {{1, 2, 3}, {}, {}});
    const auto first = writer.addLocation({"P-1", Position::integrationPoint, "C3D8R", 0, ""}, {{}, {1, 2}, {1, 1}});
    const auto second = writer.addLocation({"P-2", Position::elementNodal, "S4", 3, "top"}, {{5, 6, 5}, {1, 1, 2}, {}});

    const auto u = writer.addField(step, "U", {"Spatial displacement", 3, {"1", "2", "3"}, {8}, false});
    const auto displacements = writer.addBlock(u, nodes, {.width = 3});
    writer.writeRows(displacements, frame, std::vector<float>{3, 4, 0, 0, 0, 1, 1, 2, 2});

    const FieldInfo stress{"Stress", 5, {"11", "22", "33", "12", "13", "23"}, {4, 1, 99}, false};
    const auto s = writer.addField(step, "S", stress);
    const auto inSolids = writer.addBlock(s, first, {.width = 6});
    writer.writeRows(inSolids, frame, std::vector<float>{1, 2, 3, 4, 5, 6, 10, 0, 0, 0, 0, 0});
    // A surface kind in an order of its own: 12 before 11, no 33.
    const auto inShells = writer.addBlock(s, second, {.width = 2, .type = 7, .componentLabels = {"12", "11"}});
    writer.writeRows(inShells, frame, std::vector<float>{4, 1, 5, 2, 6, 3});

    const auto e = writer.addField(step, "E", {"Strain", 9, {}, {}, true});
    const auto strains = writer.addBlock(e, first, {.width = 3, .isDouble = true});
    writer.writeRows(strains, frame, std::vector<double>{1, 2, 3, 4, 5, 6});
    writer.finish();
    odb_ = &openOdb(path_.c_str(), true, false);
  }

  const odb_Frame& frame() { return odb_->steps()["Step-1"].frames().constGet(0); }
  odb_FieldOutput field(const char* name) { return frame().fieldOutputs().get(name); }
  const odb_Set& elementSet(const char* name) { return odb_->rootAssembly().elementSets(false)[name]; }
  const odb_Set& nodeSet(const char* name) { return odb_->rootAssembly().nodeSets(false)[name]; }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
  odb_Odb* odb_ = nullptr;
};

TEST_F(DatabaseTest, NamesComeBack) {
  EXPECT_STREQ(odb_->name().cStr(), path_.c_str());
  EXPECT_STREQ(odb_->rootAssembly().name().cStr(), "ASSEMBLY");
  EXPECT_STREQ(odb_->rootAssembly().instances()["P-2"].name().cStr(), "P-2");
  EXPECT_STREQ(odb_->rootAssembly().instances()["P-2"].partName().cStr(), "P");
  EXPECT_STREQ(odb_->parts()["P"].elementSets(false)["EACH"].name().cStr(), "EACH");
  EXPECT_EQ(frame().incrementNumber(), 12);
  EXPECT_STREQ(frame().description().cStr(), "Increment 12");
  EXPECT_EQ(frame().frameValue(), 0.5);
  EXPECT_FALSE(odb_->hasSectorDefinition());
}

TEST_F(DatabaseTest, FieldOutputsAreOrderedByName) {
  std::string names;
  odb_FieldOutputRepositoryIT at(frame().fieldOutputs());
  for (at.first(); !at.isDone(); at.next()) names += at.currentKey().cStr();
  EXPECT_EQ(names, "ESU");
}

TEST_F(DatabaseTest, InvariantCodesOfLaterProgramsAreLeftOut) {
  const auto invariants = field("S").validInvariants();
  EXPECT_EQ(invariants.size(), 2);
  EXPECT_TRUE(invariants.isMember(odb_Enum::mises));
}

TEST_F(DatabaseTest, BlocksOfNodesHandOutTheStoredRows) {
  const odb_FieldOutput u = field("U");
  ASSERT_EQ(u.bulkDataBlocks().size(), 1);
  const odb_FieldBulkData& block = u.bulkDataBlocks()[0];
  EXPECT_EQ(block.valueCount(), 3);
  EXPECT_EQ(block.width(), 3);
  EXPECT_EQ(block.precision(), 0);
  EXPECT_THAT(floats(block.data(), 9), ElementsAre(3, 4, 0, 0, 0, 1, 1, 2, 2));
  EXPECT_EQ(block.dataDouble(), nullptr);
  EXPECT_EQ(block.numberOfElements(), 0);
  EXPECT_EQ(block.elementLabels(), nullptr);
  EXPECT_EQ(block.nodeLabels()[2], 3);
  EXPECT_EQ(block.mises(), nullptr);
}

TEST_F(DatabaseTest, TensorsInTheirUsualOrderAreHandedOutInPlace) {
  const odb_FieldOutput s = field("S");
  const odb_FieldBulkData& block = s.bulkDataBlocks()[0];
  EXPECT_EQ(block.data(), block.data());
  EXPECT_EQ(block.numberOfElements(), 2);
  EXPECT_EQ(block.elementLabels()[1], 2);
  EXPECT_EQ(block.integrationPoints()[1], 1);
  EXPECT_THAT(floats(block.data(), 6), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_FLOAT_EQ(block.mises()[0], std::sqrt(0.5F * (1 + 1 + 4) + 3.0F * (16 + 25 + 36)));
  EXPECT_EQ(block.mises()[1], 10.0F);
}

TEST_F(DatabaseTest, TensorsOfElementsHaveEveryComponentInItsPlace) {
  const odb_FieldOutput s = field("S");
  const odb_FieldBulkData& block = s.bulkDataBlocks()[1];
  EXPECT_EQ(block.type(), 7);
  EXPECT_EQ(block.width(), 4);
  EXPECT_THAT(floats(block.data(), 12), ElementsAre(1, 0, 0, 4, 2, 0, 0, 5, 3, 0, 0, 6));
  EXPECT_EQ(block.numberOfElements(), 2);
  EXPECT_EQ(block.componentLabels().size(), 2);
}

TEST_F(DatabaseTest, ValuesGiveOneNumberPerComponentOfTheField) {
  const odb_FieldOutput s = field("S");
  ASSERT_EQ(s.values().size(), 5);
  const odb_FieldValue value = s.values().constGet(4);
  EXPECT_EQ(value.type(), 7);
  EXPECT_EQ(value.dataCount(), 6);
  EXPECT_THAT(floats(value.floatData(), 6), ElementsAre(3, 0, 0, 6, 0, 0));
  EXPECT_EQ(value.doubleData(), nullptr);
  EXPECT_FLOAT_EQ(value.mises(), std::sqrt(0.5F * (9 + 9) + 3.0F * 36));
}

TEST_F(DatabaseTest, EngineeringShearsAreHalvedForInvariants) {
  const odb_FieldOutput e = field("E");
  const odb_FieldValue value = e.values().constGet(0);
  EXPECT_EQ(value.precision(), 1);
  EXPECT_EQ(value.floatData(), nullptr);
  ASSERT_EQ(value.dataCount(), 3);
  EXPECT_EQ(value.doubleData()[2], 3.0);
  // Components 11, 22, 12 of a surface kind without labels; 12 = 3 is twice the tensor component.
  EXPECT_FLOAT_EQ(value.mises(), std::sqrt(0.5F * (1 + 4 + 1) + 3.0F * 2.25F));
  EXPECT_FLOAT_EQ(value.maxInPlanePrincipal(), 1.5F + std::sqrt(0.25F + 2.25F));
}

TEST_F(DatabaseTest, MagnitudeBelongsToVectorsInvariantsToTensors) {
  const odb_FieldOutput u = field("U");
  EXPECT_EQ(u.values().constGet(0).magnitude(), 5.0F);
  EXPECT_EQ(u.values().constGet(0).mises(), 0.0F);
  EXPECT_EQ(u.values().constGet(0).maxPrincipal(), 0.0F);
  EXPECT_EQ(field("S").values().constGet(0).magnitude(), 0.0F);
  EXPECT_EQ(field("S").values().constGet(0).outOfPlanePrincipal(), 3.0F);
}

TEST_F(DatabaseTest, ADefaultValueIsAScalarWithoutData) {
  const odb_FieldValue value;
  EXPECT_EQ(value.type(), 2);
  EXPECT_EQ(value.precision(), 0);
  EXPECT_EQ(value.dataCount(), 0);
  EXPECT_EQ(value.mises(), 0.0F);
}

TEST_F(DatabaseTest, AnAssemblySetTakesTheRowsOfEachInstance) {
  const odb_FieldOutput subset = field("S").getSubset(elementSet("BOTH"));
  ASSERT_EQ(subset.bulkDataBlocks().size(), 2);
  EXPECT_EQ(subset.values().size(), 3);
  EXPECT_EQ(subset.values().constGet(0).floatData()[0], 10.0F);
  EXPECT_THAT(floats(subset.bulkDataBlocks()[1].data(), 8), ElementsAre(1, 0, 0, 4, 2, 0, 0, 5));
  EXPECT_EQ(subset.bulkDataBlocks()[1].numberOfElements(), 1);
  EXPECT_EQ(subset.bulkDataBlocks()[1].nodeLabels()[1], 6);
}

TEST_F(DatabaseTest, AnInstanceSetStaysInItsInstanceAndAPartSetIsInAll) {
  const odb_Set& mine = odb_->rootAssembly().instances()["P-2"].elementSets(false)["MINE"];
  const odb_FieldOutput ofInstance = field("S").getSubset(mine);
  ASSERT_EQ(ofInstance.values().size(), 1);
  EXPECT_EQ(ofInstance.values().constGet(0).floatData()[0], 3.0F);
  const odb_Set& each = odb_->parts()["P"].elementSets(false)["EACH"];
  EXPECT_EQ(field("S").getSubset(each).values().size(), 3);
}

TEST_F(DatabaseTest, RowsOfNodesAreInNodeSetsOnly) {
  EXPECT_EQ(field("U").getSubset(elementSet("BOTH")).bulkDataBlocks().size(), 0);
  const odb_FieldOutput tip = field("U").getSubset(nodeSet("TIP"));
  ASSERT_EQ(tip.values().size(), 2);
  EXPECT_EQ(tip.values().constGet(0).magnitude(), 5.0F);
  EXPECT_EQ(tip.values().constGet(1).magnitude(), 3.0F);
  EXPECT_EQ(field("S").getSubset(nodeSet("TIP")).values().size(), 0);
}

TEST_F(DatabaseTest, AnEmptySetLeavesNoBlock) {
  EXPECT_EQ(field("U").getSubset(nodeSet("EMPTY")).bulkDataBlocks().size(), 0);
  EXPECT_EQ(field("U").getSubset(odb_Set()).values().size(), 0);
}

TEST_F(DatabaseTest, ASubsetOfASubsetHoldsWhatIsInBoth) {
  const odb_Set& each = odb_->parts()["P"].elementSets(false)["EACH"];
  const odb_FieldOutput both = field("S").getSubset(each).getSubset(elementSet("BOTH"));
  EXPECT_EQ(both.values().size(), 2);
}

TEST_F(DatabaseTest, LocationsTellTheirSectionPoints) {
  const odb_FieldOutput s = field("S");
  ASSERT_EQ(s.locations().size(), 2);
  EXPECT_EQ(s.locations().constGet(0).position(), odb_Enum::integrationPoint);
  EXPECT_EQ(s.locations().constGet(0).sectionPoints().size(), 0);
  ASSERT_EQ(s.locations().constGet(1).sectionPoints().size(), 1);
  EXPECT_EQ(s.locations().constGet(1).sectionPoints()[0].number(), 3);
  EXPECT_STREQ(s.locations().constGet(1).sectionPoints()[0].description().cStr(), "top");
}

TEST_F(DatabaseTest, AClosedDatabaseRefusesFurtherQuestions) {
  odb_Odb copy = *odb_;
  odb_->close();
  EXPECT_THROW(static_cast<void>(copy.steps()), odb_Exception);
  EXPECT_THROW(static_cast<void>(copy.name()), odb_Exception);
}

TEST_F(DatabaseTest, AHandleOutlivesTheStepItCameFrom) {
  const odb_FieldOutput u = field("U");
  odb_->close();
  EXPECT_EQ(u.values().constGet(0).magnitude(), 5.0F);
}

std::string reportOf(const std::string& path) {
  try {
    openOdb(path.c_str(), true, false);
  } catch (const nex_Exception& error) {
    return error.UserReport().cStr();
  }
  return "no failure";
}

TEST_F(DatabaseTest, WhatIsNoDatabaseIsNamed) {
  EXPECT_THAT(reportOf(directory_.file("none.odb")), HasSubstr("none.odb: No such file or directory"));
  std::ofstream(directory_.file("text.odb")) << "no database";
  EXPECT_THAT(reportOf(directory_.file("text.odb")), HasSubstr("text.odb: is not a database: it is not an HDF5 file"));
  EXPECT_THROW(static_cast<void>(isUpgradeRequiredForOdb(directory_.file("text.odb").c_str())), odb_Exception);
  EXPECT_FALSE(isUpgradeRequiredForOdb(path_.c_str()));
}

TEST(UpgradedDatabase, IsTheOneThatWasWrittenWhateverTakesItsNameMeanwhile) {
  const TemporaryDirectory directory;
  const odb_String old(directory.file("old.odb"));
  const odb_String other(directory.file("other.odb"));
  writeOldDatabase(old.cStr(), "old");
  writeOldDatabase(other.cStr(), "other");
  ASSERT_TRUE(isUpgradeRequiredForOdb(old));
  upgradeOdb(old, directory.file("copy").c_str());
  // As another process would do it.
  odbstore::upgrade(other.cStr(), directory.file("copy.odb"));
  odb_Odb& odb = openOdb(directory.file("copy.odb").c_str(), true, false);
  EXPECT_STREQ(odb.name().cStr(), "old");
  odb.close();
  EXPECT_STREQ(openOdb(directory.file("copy.odb").c_str(), true, false).name().cStr(), "other") << "opened once only";
}

}  // namespace
