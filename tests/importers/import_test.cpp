#include <gmock/gmock.h>

#include "import_fixture.h"

namespace importers::calculix {
namespace {

using namespace frd_text;
using odbstore::Position;
using odbstore::Reader;
using odbstore::SetKind;
using odbstore::StoredBlock;
using odbstore::StoredField;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(ImportTest, SaysWhatCameOfIt) {
  const ImportSummary summary =
      import(twoBars() + temperature({}) + temperature({.increment = 2, .counter = 2}) +
                 result({.increment = 2, .counter = 2}, "DISP", kDisplacement, {{1, {1, 2, 3}}}) +
                 temperature({.step = 2, .counter = 3}) + kEnd,
             "*NSET,NSET=A\n1\n*ELSET,ELSET=B\n10\n");
  EXPECT_EQ(summary.steps, 2);
  EXPECT_EQ(summary.frames, 3);
  EXPECT_EQ(summary.fields, 2);
  EXPECT_EQ(summary.sets, 2);
  EXPECT_EQ(summary.cutOffBehind, "");
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(ImportTest, ModelHasOneInstanceOfOnePart) {
  import(twoBars() + temperature({}) + kEnd);
  const Reader reader(output_);
  EXPECT_THAT(reader.parts(), ElementsAre("PART-1"));
  ASSERT_EQ(reader.instances().size(), 1U);
  EXPECT_EQ(reader.instances()[0].name, "PART-1-1");
  EXPECT_EQ(reader.instances()[0].part, "PART-1");
  EXPECT_EQ(reader.title(), "a title of two words");
  EXPECT_EQ(reader.producer(), "CalculiX Version 2.20");
}

TEST_F(ImportTest, DecksHeadingGoesBeforeThatOfTheResults) {
  import(twoBars() + kEnd, "*HEADING\nA longer title\n");
  EXPECT_EQ(Reader(output_).title(), "A longer title");
}

TEST_F(ImportTest, SetsOfTheDeckAreSetsOfTheAssembly) {
  import(twoBars() + kEnd, "*NSET,NSET=Both ends\n3,1\n*NSET,NSET=Tip\n3\n*ELSET,ELSET=Tip\n20\n*NSET,NSET=NONE\n");
  const Reader reader(output_);
  EXPECT_THAT(reader.sets({}, SetKind::node), ElementsAre("Both ends", "NONE", "Tip-NODES"));
  EXPECT_THAT(reader.sets({}, SetKind::element), ElementsAre("Tip"));
  const auto ends = reader.setMembers({}, SetKind::node, "Both ends");
  ASSERT_EQ(ends.size(), 1U);
  EXPECT_EQ(ends[0].instance, "PART-1-1");
  EXPECT_THAT(ends[0].labels, ElementsAre(1, 3));
  EXPECT_THAT(reader.setMembers({}, SetKind::element, "Tip").at(0).labels, ElementsAre(20));
  EXPECT_THAT(reader.setMembers({}, SetKind::node, "NONE"), IsEmpty());
}

TEST_F(ImportTest, SetsThatRecordsCouldNotTellApartAreRenamedWithANote) {
  import(twoBars() + temperature({}) + kEnd,
         "*NSET,NSET=A-B\n1\n*NSET,NSET=TOP\n2\n*ELSET,ELSET=A_B\n10\n*NSET,NSET=\"A B\"\n3\n*NSET,NSET=Top\n1\n");
  const Reader reader(output_);
  EXPECT_THAT(reader.sets({}, SetKind::element), ElementsAre("A_B"));
  EXPECT_THAT(reader.sets({}, SetKind::node), ElementsAre("A B-NODES-2", "A-B-NODES", "TOP", "Top"));
  EXPECT_THAT(reader.setMembers({}, SetKind::node, "A-B-NODES").at(0).labels, ElementsAre(1));
  EXPECT_THAT(warnings_,
              ElementsAre(EndsWith("job.inp:1: note: the node set A-B becomes A-B-NODES, because records cannot tell "
                                   "it from another set"),
                          EndsWith("job.inp:7: note: the node set A B becomes A B-NODES-2, because records cannot "
                                   "tell it from another set")));
}

TEST_F(ImportTest, SetsThatRecordsLeaveOutAreNamed) {
  import(twoBars() + temperature({}) + kEnd, "*NSET,NSET=A\n1\n*NSET,NSET=WarnNodes\n1\n*ELSET,ELSET=MeshInfo\n10\n");
  EXPECT_THAT(
      warnings_,
      ElementsAre(EndsWith("job.inp:3: warning: the sets WarnNodes, "
                           "MeshInfo will have no records: an extraction leaves out sets whose names contain \"Warn\" "
                           "or \"Info\"")));
}

TEST_F(ImportTest, ARestartWithoutAMeshIsNamed) {
  import(twoBars() + temperature({.step = 2}) + kEnd,
         "** a comment\n*RESTART,READ,STEP=1\n*STEP\n*STATIC\n*END STEP\n");
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.inp:2: warning: the deck restarts an earlier run and has no mesh, "
                                              "so the sets of that run are unknown")));
  import(twoBars() + temperature({}) + kEnd, "*RESTART,WRITE\n*STEP\n*STATIC\n*END STEP\n");
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(ImportTest, ASetHasEverySpellingOfItsName) {
  const ImportSummary summary = import(twoBars() + kEnd, "*NSET,NSET=Ends\n1\n*NSET,NSET=ENDS\n3\n");
  const Reader reader(output_);
  EXPECT_THAT(reader.sets({}, SetKind::node), ElementsAre("ENDS", "Ends"));
  for (const char* name : {"ENDS", "Ends"}) {
    EXPECT_THAT(reader.setMembers({}, SetKind::node, name).at(0).labels, ElementsAre(1, 3));
  }
  EXPECT_EQ(summary.sets, 2);
}

TEST_F(ImportTest, SurfacesAreSets) {
  import(twoBars() + kEnd, "*ELEMENT,TYPE=B31,ELSET=BARS\n10,1,2\n20,2,3\n*SURFACE,NAME=Skin\n20,S1\n");
  const Reader reader(output_);
  EXPECT_THAT(reader.setMembers({}, SetKind::element, "Skin").at(0).labels, ElementsAre(20));
  EXPECT_THAT(reader.setMembers({}, SetKind::node, "Skin-NODES").at(0).labels, ElementsAre(2, 3));
}

TEST_F(ImportTest, SetsThatMatchNothingAreKeptAndNamed) {
  import(twoBars() + kEnd,
         "*NODE,NSET=All\n1,\n2,\n3,\n7,\n8,\n9,\n*ELEMENT,TYPE=T3D2,ELSET=BARS\n10,1,2\n20,2,3\n"
         "*ELEMENT,TYPE=MASS,ELSET=POINTS\n99,8\n*NSET,NSET=REFERENCE\n7\n*NSET,NSET=NEW\n3,7\n*NSET,NSET=EMPTY\n"
         "*NSET,NSET=OF POINTS\n8\n*NSET,NSET=UNUSED\n9\n*ELSET,ELSET=NONE\n");
  EXPECT_THAT(Reader(output_).setMembers({}, SetKind::node, "REFERENCE").at(0).labels, ElementsAre(7));
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.inp:17: warning: empty sets: EMPTY, NONE"),
                                     EndsWith("job.inp:13: warning: no node of the results is in REFERENCE, UNUSED: "
                                              "their nodes belong to no element"),
                                     EndsWith("job.inp:18: warning: no node of the results is in OF POINTS"),
                                     EndsWith("job.inp:11: warning: no element of the results is in POINTS"),
                                     EndsWith("job.frd: warning: the file holds no results")));
}

TEST_F(ImportTest, VectorsAndScalarsLieAtTheNodes) {
  import(twoBars() + result({}, "DISP", kDisplacement, {{3, { 1, 2, 3 }}, { 1, { 4, 5, 6 } }}) + kEnd);
  const auto step = Reader(output_).step("Step-1");
  const StoredField& field = fieldOf(*step, "U");
  EXPECT_EQ(field.info.type, 3);
  ASSERT_EQ(field.blocks.size(), 1U);
  const auto& location = *field.blocks[0].location();
  EXPECT_EQ(location.info().position, Position::nodal);
  EXPECT_EQ(location.info().instance, "PART-1-1");
  EXPECT_THAT(location.nodeLabels(), ElementsAre(3, 1)) << "rows keep their order";
  EXPECT_THAT(rowsOf(field.blocks[0]), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(ImportTest, TensorsLieAtTheNodesOfEveryElement) {
  import(twoBars() +
         result({}, "STRESS", kStress,
                {{2,
                  { 21,
                    22,
                    23,
                    24,
                    25,
                    26 }},
                 {1,
                  { 11,
                    12,
                    13,
                    14,
                    15,
                    16 }},
                 { 3,
                   { 31,
                     32,
                     33,
                     34,
                     35,
                     36 } }}) +
         kEnd);
  const auto step = Reader(output_).step("Step-1");
  const StoredField& field = fieldOf(*step, "S");
  EXPECT_EQ(field.info.type, 5);
  ASSERT_EQ(field.blocks.size(), 1U);
  const auto& location = *field.blocks[0].location();
  EXPECT_EQ(location.info().position, Position::elementNodal);
  EXPECT_EQ(location.info().elementType, "LINE2");
  EXPECT_THAT(location.elementLabels(), ElementsAre(10, 10, 20, 20));
  EXPECT_THAT(location.nodeLabels(), ElementsAre(1, 2, 2, 3));
  // 11, 22, 33, 12, 13, 23 from XX, YY, ZZ, XY, YZ, ZX.
  EXPECT_THAT(rowsOf(field.blocks[0]), ElementsAre(11, 12, 13, 14, 16, 15, 21, 22, 23, 24, 26, 25,  //
                                                   21, 22, 23, 24, 26, 25, 31, 32, 33, 34, 36, 35));
}

TEST_F(ImportTest, TensorsOfSomeNodesLieAtThoseOnly) {
  import(twoBars() + result({}, "STRESS", kStress, {{ 3, { 1, 2, 3, 4, 5, 6 } }}) + kEnd);
  const auto step = Reader(output_).step("Step-1");
  const StoredBlock& block = fieldOf(*step, "S").blocks.at(0);
  EXPECT_THAT(block.location()->elementLabels(), ElementsAre(20));
  EXPECT_THAT(block.location()->nodeLabels(), ElementsAre(3));
  EXPECT_THAT(rowsOf(block), ElementsAre(1, 2, 3, 4, 6, 5));
}

TEST_F(ImportTest, TensorsAtNodesOfNoElementAreLeftOutWithAWarning) {
  import(twoBars() + result({}, "STRESS", kStress, {{1, { 1, 2, 3, 4, 5, 6 }}, { 77, { 1, 2, 3, 4, 5, 6 } }}) + kEnd);
  ASSERT_EQ(warnings_.size(), 1U);
  EXPECT_THAT(warnings_[0], EndsWith("job.frd:19: warning: S has values at 1 nodes that belong to no element with such "
                                     "values; they are left out"));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_EQ(fieldOf(*step, "S").blocks.at(0).rows(), 1);
}

TEST_F(ImportTest, AllElementTypesShareOneBlock) {
  import(kHeading +
             nodes({{1,
                     { 0,
                       0,
                       0 }},
                    {2,
                     { 1,
                       0,
                       0 }},
                    { 3,
                      { 1,
                        1,
                        0 } }}) +
             elements({{5,
                        7,
                        { 1,
                          2,
                          3 }},
                       {6,
                        11,
                        { 1,
                          2 }},
                       {7,
                        11,
                        { 3,
                          2 }},
                       { 8,
                         11,
                         { 3,
                           1 } }}) +
             result({}, "STRESS", kStress,
                    {{1,
                      { 1,
                        0,
                        0,
                        0,
                        0,
                        0 }},
                     {2,
                      { 2,
                        0,
                        0,
                        0,
                        0,
                        0 }},
                     { 3,
                       { 3,
                         0,
                         0,
                         0,
                         0,
                         0 } }}) +
             kEnd,
         "*ELEMENT,TYPE=T3D2\n6,1,2\n*ELEMENT,TYPE=B31\n7,3,2\n*ELEMENT,TYPE=S8\n5,1,2,3,4,5,6,7,8\n");
  const auto step = Reader(output_).step("Step-1");
  const StoredField& field = fieldOf(*step, "S");
  ASSERT_EQ(field.blocks.size(), 1U) << "of several the extraction would keep the components of the last";
  EXPECT_EQ(field.blocks[0].location()->info().elementType, "");
  EXPECT_THAT(field.blocks[0].location()->elementLabels(), ElementsAre(5, 5, 5, 6, 6, 7, 7, 8, 8));
  EXPECT_THAT(field.blocks[0].location()->nodeLabels(), ElementsAre(1, 2, 3, 1, 2, 3, 2, 3, 1));
}

TEST_F(ImportTest, FramesThatLieAlikeShareTheirLocation) {
  const std::vector<Row> all = {{1, {1, 2, 3, 4, 5, 6}}, {2, {1, 2, 3, 4, 5, 6}}, {3, {1, 2, 3, 4, 5, 6}}};
  std::string text = twoBars();
  for (int i = 1; i <= 20; ++i) {
    text += result({.increment = i, .counter = i}, "STRESS", kStress, i == 7 ? std::vector<Row>{all[0]} : all);
  }
  import(text + kEnd);
  const auto step = Reader(output_).step("Step-1");
  const StoredField& field = fieldOf(*step, "S");
  ASSERT_EQ(field.blocks.size(), 2U);
  EXPECT_FALSE(field.blocks[0].existsIn(6));
  EXPECT_TRUE(field.blocks[0].existsIn(19));
  EXPECT_TRUE(field.blocks[1].existsIn(6));
  EXPECT_FALSE(field.blocks[1].existsIn(7));
}

TEST_F(ImportTest, BlocksWithoutRowsAreLeftOutWithOneWarning) {
  const ImportSummary summary = import(twoBars() + result({}, "MAFLOW", {{"MF", 1}}, {}) + temperature({}) +
                                       result({.increment = 2, .counter = 2}, "MAFLOW", {{"MF", 1}}, {}) + kEnd);
  EXPECT_EQ(summary.fields, 1);
  EXPECT_EQ(summary.frames, 1);
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.frd:19: warning: MAFLOW has no rows and is left out")));
}

TEST_F(ImportTest, AFileThatIsCutOffGivesWhatIsComplete) {
  const std::string text =
      twoBars() + temperature({.value = 0.5}) + temperature({.increment = 2, .counter = 2, .value = 1.0});
  const ImportSummary summary = import(text.substr(0, text.size() - 20));
  EXPECT_EQ(summary.frames, 1);
  EXPECT_EQ(summary.cutOffBehind, "step 1, time 0.5");
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.frd:28: warning: the file is truncated here; complete results end "
                                              "after step 1, time 0.5")));
  std::filesystem::remove(output_);
  EXPECT_THAT(failure(text, "", true),
              EndsWith("error: the file is truncated here; complete results end after step 1, time 1"));
}

TEST_F(ImportTest, AFileThatIsCutOffInItsModelIsRefused) {
  const std::string model = twoBars();
  for (std::size_t cut = 8; cut + 1 < model.size(); ++cut) {
    ASSERT_THAT(failure(model.substr(0, cut)), EndsWith("error: the file ends before its model is complete")) << cut;
  }
}

TEST_F(ImportTest, AModelThatContradictsItselfIsRefused) {
  const std::string bars = nodes({{1, {0, 0, 0}}, {2, {1, 0, 0}}});
  EXPECT_THAT(failure(kHeading + kEnd), EndsWith("job.frd:7: error: there is no model"));
  EXPECT_THAT(failure(kHeading + nodes({{1, {0, 0, 0}}, {1, {1, 0, 0}}}) + kEnd),
              EndsWith("job.frd:7: error: the node 1 occurs twice"));
  EXPECT_THAT(failure(kHeading + bars + elements({{5, 11, {1, 3}}}) + kEnd),
              EndsWith("job.frd:11: error: the element 5 has the node 3, which does not exist"));
  EXPECT_THAT(failure(kHeading + bars + elements({{5, 11, {1, 2}}, {5, 11, {2, 1}}}) + kEnd),
              EndsWith("job.frd:11: error: the element 5 occurs twice"));
  EXPECT_THAT(failure(twoBars() + bars + kEnd),
              EndsWith("job.frd:18: error: a second model in one file cannot be imported"));
  EXPECT_THAT(failure(kHeading + temperature({}) + twoBars()),
              EndsWith("job.frd:8: error: results come before the nodes that they belong to"));
}

TEST_F(ImportTest, AResultThatIsNotUnderstoodIsLeftOut) {
  const std::string twice = result({}, "CELS", kTemperature, {{2, {1}}, {2, {1}}});
  const std::string garbled = " -4  MYSTERY     1    1\n -5  X           1    1    0    0\n -1         1 1.2x\n -3\n";
  const std::string odd = frd_text::frame({.increment = 2, .counter = 2}, 1) + garbled;
  import(twoBars() + twice + temperature({}) + odd + temperature({.increment = 3, .counter = 3}, 30) + kEnd);
  EXPECT_THAT(warnings_,
              ElementsAre(EndsWith("job.frd:19: warning: CELS has two rows for the node 2; the block is left out"),
                          EndsWith("job.frd:35: warning: \" 1.2x\" is not a number; the block is left out")));
  EXPECT_THAT(increments("Step-1"), ElementsAre(1, 3));
  const auto step = Reader(output_).step("Step-1");
  EXPECT_THAT(rowsOf(fieldOf(*step, "NT").blocks.at(0), 1), ElementsAre(30)) << "what follows is read";
  std::filesystem::remove(output_);
  EXPECT_THAT(failure(twoBars() + twice + kEnd, "", true), EndsWith("error: CELS has two rows for the node 2"));
  EXPECT_THAT(failure(twoBars() + odd + kEnd, "", true), EndsWith("error: \" 1.2x\" is not a number"));
}

TEST_F(ImportTest, DamageLeavesTheOldDatabaseAlone) {
  import(twoBars() + temperature({}, 1) + kEnd);
  const auto size = std::filesystem::file_size(output_);
  EXPECT_THAT(failureOf([&] { import(twoBars() + temperature({}) + "garbled\n" + kEnd); }),
              EndsWith("job.frd:24: error: this is not the start of a result block"));
  EXPECT_EQ(std::filesystem::file_size(output_), size);
  EXPECT_EQ(directory_.entries(), 2U) << "the result file and the old database, no temporary ones";
}

TEST_F(ImportTest, ADamagedDeckStopsTheImport) {
  EXPECT_THAT(failure(twoBars() + kEnd, "*NSET,NSET=A\n1,2z\n"),
              EndsWith("job.inp:2: error: \"2z\" is neither a label nor a set"));
}

}  // namespace
}  // namespace importers::calculix
