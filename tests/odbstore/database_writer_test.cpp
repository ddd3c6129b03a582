// Files of layout 3: what is declared, what is delivered, and what is read back.
#include "odbwriter/database_writer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <numeric>

#include "base/descriptor.h"
#include "odbstore/catalog_lines.h"
#include "odbstore/database_file.h"
#include "odbstore/reader.h"
#include "odbstore/scan_program.h"
#include "odbstore/store_error.h"
#include "odbstore/sum_check.h"
#include "support/temporary_directory.h"

namespace odbstore {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const FieldInfo kStress{"Stress components", 5, {"11", "22", "33", "12", "13", "23"}, {4, 1}, false};
const FieldInfo kTemperature{"Nodal temperature", 2, {}, {}, false};
const LocationInfo kNodal{"I", Position::nodal, "", 0, ""};

template <class Action>
std::string failureOf(Action&& action) {
  try {
    action();
  } catch (const StoreError& error) {
    return error.what();
  }
  return "no failure";
}

class DatabaseWriterTest : public testing::TestWithParam<WriterOptions> {
 protected:
  std::vector<float> rowsOf(const StoredBlock& block, int frame) {
    std::vector<float> rows(static_cast<std::size_t>(block.rows() * block.width()));
    block.read(frame, rows.data());
    return rows;
  }

  // What the program that reads HDF5's structure says of the file is what its catalog says, and all its sums are right.
  void expectCatalogIsRight() {
    const std::shared_ptr<const DatabaseFile> file = DatabaseFile::open(path_, path_);
    ASSERT_TRUE(file->isCatalogued());
    const std::optional<Catalog> scanned = scanCatalog(file->descriptor(), path_, file->size());
    ASSERT_TRUE(scanned);
    EXPECT_EQ(linesOf(file->catalog()), linesOf(*scanned));
    compareSums(*file, [](const DamagedPiece& piece) { ADD_FAILURE() << "piece at byte " << piece.bytes.begin; });
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
};

TEST_P(DatabaseWriterTest, RowsComeInAnyOrder) {
  DatabaseWriter writer(path_, GetParam());
  const auto nodes = writer.addLocation(kNodal, {{1, 2}, {}, {}});
  const auto step = writer.addStep("Step-1", {});
  for (int i = 0; i < 4; ++i) writer.addFrame(step, {i, 0.1 * i, ""});
  const auto temperature = writer.addField(step, "NT", kTemperature);
  const auto block = writer.addBlock(temperature, nodes, {.frames = std::vector<int>{0, 1, 3}});
  const auto exact = writer.addBlock(writer.addField(step, "X", kTemperature), nodes, {.isDouble = true});
  writer.layOut();
  writer.writeRows(block, 3, std::vector<float>{7, 8});
  for (int i = 3; i >= 0; --i) writer.writeRows(exact, i, std::vector<double>{i + 1.0 / 3.0, -1e300});
  writer.writeRows(block, 0, std::vector<float>{1, 2});
  writer.writeRows(block, 1, std::vector<float>{3, 4});
  writer.finish();
  expectCatalogIsRight();
  const auto stored = Reader(path_).step("Step-1");
  const StoredField* const field = stored->findField("NT");
  ASSERT_NE(field, nullptr);
  EXPECT_THAT(field->frames(), ElementsAre(0, 1, 3));
  EXPECT_THAT(rowsOf(field->blocks.at(0), 0), ElementsAre(1, 2));
  EXPECT_THAT(rowsOf(field->blocks.at(0), 3), ElementsAre(7, 8));
  std::vector<double> back(2);
  stored->findField("X")->blocks.at(0).read(2, back.data());
  EXPECT_THAT(back, ElementsAre(2 + 1.0 / 3.0, -1e300));
  EXPECT_EQ(stored->findField("Y"), nullptr);
}

TEST_P(DatabaseWriterTest, RowsThatPlacesShareAreStoredOnce) {
  DatabaseWriter writer(path_, GetParam());
  const LocationInfo elements{"I", Position::elementNodal, "", 0, ""};
  const auto shared =
      writer.addLocation(elements, {{1, 2, 1, 3, 1, 2, 2, 3}, {5, 5, 6, 6, 7, 7, 8, 8}, {}}, {0, 1, 0, 2, 0, 1, 1, 2});
  EXPECT_EQ(writer.deliveredRows(shared), 3);
  const auto step = writer.addStep("Step-1", {});
  writer.addFrame(step, {});
  writer.addFrame(step, {});
  const auto block = writer.addBlock(writer.addField(step, "S", kStress), shared, {.width = 6});
  writer.layOut();
  for (int frame = 0; frame < 2; ++frame) {
    std::vector<float> rows(18);
    std::iota(rows.begin(), rows.end(), static_cast<float>(100 * frame));
    writer.writeRows(block, frame, rows);
  }
  writer.finish();
  expectCatalogIsRight();
  const auto stored = Reader(path_).step("Step-1");
  const StoredBlock& back = stored->fields().at(0).blocks.at(0);
  EXPECT_TRUE(back.location()->isIndexed());
  EXPECT_EQ(back.rows(), 8);
  EXPECT_EQ(back.storedRows(), 3);
  EXPECT_THAT(back.location()->rowOf(), ElementsAre(0, 1, 0, 2, 0, 1, 1, 2));
  const std::vector<float> rows = rowsOf(back, 1);
  EXPECT_EQ(rows.size(), 48U);
  EXPECT_EQ(rows[0], 100);
  EXPECT_EQ(rows[6], 106);
  EXPECT_EQ(rows[12], 100);
  EXPECT_EQ(rows[47], 117);
}

TEST_P(DatabaseWriterTest, AnIndexThatSavesLittleIsNotKept) {
  DatabaseWriter writer(path_, GetParam());
  const auto nodes = writer.addLocation(kNodal, {{1, 2, 3, 4, 4}, {}, {}}, {0, 1, 2, 3, 3});
  EXPECT_EQ(writer.deliveredRows(nodes), 4);
  const auto step = writer.addStep("Step-1", {});
  writer.addFrame(step, {});
  const auto block = writer.addBlock(writer.addField(step, "NT", kTemperature), nodes, {});
  writer.layOut();
  writer.writeRows(block, 0, std::vector<float>{1, 2, 3, 4});
  writer.finish();
  expectCatalogIsRight();
  const auto stored = Reader(path_).step("Step-1");
  const StoredBlock& back = stored->fields().at(0).blocks.at(0);
  EXPECT_FALSE(back.location()->isIndexed());
  EXPECT_THAT(rowsOf(back, 0), ElementsAre(1, 2, 3, 4, 4));
}

TEST_P(DatabaseWriterTest, BlocksWithoutRowsOrFramesArePossible) {
  DatabaseWriter writer(path_, GetParam());
  const auto none = writer.addLocation(kNodal, {});
  const auto one = writer.addLocation(kNodal, {{1}, {}, {}});
  const auto step = writer.addStep("Step-1", {});
  writer.addFrame(step, {});
  const auto field = writer.addField(step, "NT", kTemperature);
  writer.addBlock(field, none, {});
  writer.addBlock(field, one, {.frames = std::vector<int>{}});
  writer.addField(writer.addStep("Step-2", {}), "NT", kTemperature);
  writer.finish();
  expectCatalogIsRight();
  const auto stored = Reader(path_).step("Step-1");
  EXPECT_EQ(stored->fields().at(0).blocks.at(0).rows(), 0);
  EXPECT_THAT(stored->fields().at(0).blocks.at(1).frames(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Storage, DatabaseWriterTest,
                         testing::Values(WriterOptions{false, false}, WriterOptions{true, false},
                                         WriterOptions{false, true}, WriterOptions{true, true}));

using DatabaseWriterFileTest = DatabaseWriterTest;
INSTANTIATE_TEST_SUITE_P(Plain, DatabaseWriterFileTest, testing::Values(WriterOptions{}));

TEST_P(DatabaseWriterFileTest, ModelComesBackAsDeclared) {
  DatabaseWriter writer(path_);
  writer.setName("plate");
  writer.setTitle("A plate");
  writer.setProducer("a solver");
  writer.setAssemblyName("ASSEMBLY");
  writer.setSymmetryAxis({0, 0, 0, 0, 0, 1});
  writer.addPart("PLATE");
  writer.addPart("BOLT");
  writer.addInstance("PLATE-1", "PLATE");
  writer.addInstance("BOLT-1", "BOLT");
  writer.addNodes("PLATE-1", {1, 2}, {0.0, 0.0, 0.0, 1.0, 0.0, 0.0});
  writer.addElements("PLATE-1", "T3D2", {7}, {1, 2});
  writer.addElements("PLATE-1", "POINT", {}, {});
  writer.addSet({}, SetKind::node, "a/b", {{"PLATE-1", {2, 1}}, {"BOLT-1", {9}}});
  writer.addSet({}, SetKind::element, "NONE", {});
  writer.addSet({}, SetKind::element, std::string(400, 'n'), {{"PLATE-1", {7}}});
  writer.addSet({OwnerKind::instance, "PLATE-1"}, SetKind::element, "ALL", {{"", {7}}});
  writer.addSet({OwnerKind::part, "PLATE"}, SetKind::node, "TIP", {{"", {2}}});
  writer.addSet({OwnerKind::part, "PLATE"}, SetKind::node, "%", {{"", {}}});
  writer.finish();
  expectCatalogIsRight();
  const Reader reader(path_);
  EXPECT_EQ(reader.name(), "plate");
  EXPECT_EQ(reader.symmetryAxis(), (std::array<float, 6>{0, 0, 0, 0, 0, 1}));
  EXPECT_THAT(reader.parts(), ElementsAre("BOLT", "PLATE"));
  EXPECT_THAT(reader.sets({}, SetKind::node), ElementsAre("a/b"));
  EXPECT_THAT(reader.sets({}, SetKind::element), ElementsAre("NONE", std::string(400, 'n')));
  EXPECT_THAT(reader.setMembers({}, SetKind::node, "a/b").at(0).labels, ElementsAre(2, 1));
  EXPECT_THAT(reader.setMembers({}, SetKind::node, "a/b").at(1).labels, ElementsAre(9));
  EXPECT_THAT(reader.setMembers({}, SetKind::element, std::string(400, 'n')).at(0).labels, ElementsAre(7));
  EXPECT_THAT(reader.setMembers({}, SetKind::element, "NONE"), IsEmpty());
  EXPECT_THAT(reader.setMembers({OwnerKind::part, "PLATE"}, SetKind::node, "TIP").at(0).labels, ElementsAre(2));
  const std::optional<Mesh> mesh = reader.mesh("PLATE-1");
  ASSERT_TRUE(mesh);
  EXPECT_THAT(mesh->nodes, ElementsAre(1, 2));
  EXPECT_THAT(mesh->coordinates, ElementsAre(0, 0, 0, 1, 0, 0));
  ASSERT_EQ(mesh->elements.size(), 2U);
  EXPECT_EQ(mesh->elements[1].type, "T3D2");
  EXPECT_THAT(mesh->elements[1].connectivity, ElementsAre(1, 2));
  EXPECT_FALSE(reader.mesh("BOLT-1"));
}

TEST_P(DatabaseWriterFileTest, FieldsMayBeDescribedDifferentlyInSomeFrames) {
  DatabaseWriter writer(path_);
  const auto nodes = writer.addLocation(kNodal, {{1, 2}, {}, {}});
  const auto step = writer.addStep("Step-1", {});
  for (int i = 0; i < 4; ++i) writer.addFrame(step, {i, 0.1 * i, ""});
  const auto field = writer.addField(step, "T", kTemperature);
  FieldInfo late = kTemperature;
  late.description = "late";
  late.validInvariants = {8};
  writer.describeField(field, 2, late);
  writer.describeField(field, 3, late);
  writer.describeField(field, 1, kStress);
  writer.describeField(field, 1, kTemperature);
  const auto block = writer.addBlock(field, nodes, {});
  writer.layOut();
  for (int i = 0; i < 4; ++i) writer.writeRows(block, i, std::vector<float>{1, 2});
  writer.finish();
  expectCatalogIsRight();
  const auto stored = Reader(path_).step("Step-1");
  const StoredField& back = stored->fields().at(0);
  EXPECT_EQ(*back.infoIn(1), kTemperature);
  EXPECT_EQ(*back.infoIn(2), late);
  EXPECT_EQ(back.infoIn(3), back.infoIn(3)) << "the same object, as long as it is the same";
}

TEST_P(DatabaseWriterFileTest, HistoriesComeBackAsDelivered) {
  DatabaseWriter writer(path_);
  const auto step = writer.addStep("Step-1", {});
  const auto node = writer.addHistoryRegion(step, "Node I.7", {"tip", 7, -1, 0, 0, "", "TIP"});
  const auto odd = writer.addHistoryRegion(step, "odd", {});
  const auto u2 = writer.addHistory(node, "U2", 2, 2);
  writer.addHistory(node, "RF", 0, 2);
  const auto u1 = writer.addHistory(node, "U1", 1, 3);
  writer.addHistory(odd, "nothing in each", 3, 0);
  const auto other = writer.addHistory(odd, "other", 1, 2);
  writer.layOut();
  writer.writeSamples(other, std::vector<float>{8, 9});
  writer.writeSamples(u2, std::vector<float>{0, 0, 0.5F, 12.25F});
  writer.writeSamples(u1, std::vector<float>{1, 2, 3});
  writer.finish();
  expectCatalogIsRight();
  const auto stored = Reader(path_).step("Step-1");
  EXPECT_THAT(stored->historyRegions(), ElementsAre("Node I.7", "odd"));
  EXPECT_THAT(stored->historyRegion("Node I.7").outputs, ElementsAre("RF", "U1", "U2"));
  EXPECT_EQ(stored->historyRegion("Node I.7").info.set, "TIP");
  EXPECT_THAT(stored->historySamples("Node I.7", "U2").numbers, ElementsAre(0, 0, 0.5F, 12.25F));
  EXPECT_THAT(stored->historySamples("Node I.7", "U1").numbers, ElementsAre(1, 2, 3));
  EXPECT_EQ(stored->historySamples("Node I.7", "RF").samples, 0);
  EXPECT_EQ(stored->historySamples("odd", "nothing in each").samples, 3);
  EXPECT_THAT(stored->historySamples("odd", "other").numbers, ElementsAre(8, 9));
  EXPECT_THAT(failureOf([&] { stored->historyRegion("even"); }), HasSubstr("there is no history region \"even\""));
  EXPECT_THAT(failureOf([&] { stored->historySamples("odd", "U1"); }), HasSubstr("there is no history \"U1\""));
}

TEST_P(DatabaseWriterFileTest, AFileWithNextToNothingHasACatalogToo) {
  DatabaseWriter writer(path_);
  writer.finish();
  expectCatalogIsRight();
  EXPECT_THAT(Reader(path_).steps(), IsEmpty());
}

TEST_P(DatabaseWriterFileTest, WhatHasNotComeIsNamed) {
  DatabaseWriter writer(path_);
  const auto nodes = writer.addLocation(kNodal, {{1}, {}, {}});
  const auto step = writer.addStep("Step-1", {});
  for (int i = 0; i < 3; ++i) writer.addFrame(step, {});
  const auto block = writer.addBlock(writer.addField(step, "NT", kTemperature), nodes, {});
  writer.layOut();
  writer.writeRows(block, 0, std::vector<float>{1});
  writer.writeRows(block, 2, std::vector<float>{1});
  EXPECT_THAT(failureOf([&] { writer.finish(); }),
              HasSubstr("job.odb: /steps/Step-1/fields/NT/blocks/0/data: the rows of frame 1 have not come"));
  EXPECT_THAT(failureOf([&] { writer.writeRows(block, 2, std::vector<float>{1}); }),
              HasSubstr("frame 2 has come twice"));
  EXPECT_THAT(failureOf([&] { writer.writeRows(block, 3, std::vector<float>{1}); }),
              HasSubstr("does not exist in frame 3"));
  EXPECT_THAT(failureOf([&] {
                writer.writeRows(block, 1, std::vector<float>{1, 2});
              }),
              HasSubstr("2 numbers do not fill 1 rows of 1"));
  EXPECT_THAT(failureOf([&] { writer.writeRows(block, 1, std::vector<double>{1}); }),
              HasSubstr("rows come in the other precision"));
}

TEST_P(DatabaseWriterTest, BlocksMayBeDeclaredWhileRowsOfOthersCome) {
  DatabaseWriter writer(path_, GetParam());
  const LocationLabels three{{1, 2, 3}, {}, {}};
  const auto first = writer.addLocation(kNodal, three);
  const auto step = writer.addStep("Step-1", {});
  writer.addFrame(step, {0, 0.0, ""});
  writer.addFrame(step, {1, 1.0, ""});
  const auto a = writer.addBlock(writer.addField(step, "A", kTemperature), first, {});
  writer.writeRows(a, 1, std::vector<float>{1, 2, 3});
  // Like one that is in the file already, and unlike it.
  EXPECT_EQ(writer.addLocation(kNodal, three).index, first.index);
  const auto other = writer.addLocation(kNodal, {{1, 2, 4}, {}, {}});
  EXPECT_NE(other.index, first.index);
  const auto shared = writer.addLocation(kNodal, {{1, 2, 3, 3, 3, 3}, {}, {}}, {0, 1, 2, 2, 2, 2});
  const auto b = writer.addBlock(writer.addField(step, "B", kTemperature), other, {.frames = std::vector<int>{1}});
  const auto c = writer.addBlock(writer.addField(step, "C", kTemperature), shared, {.frames = std::vector<int>{0}});
  writer.writeRows(c, 0, std::vector<float>{7, 8, 9});
  EXPECT_EQ(writer.addLocation(kNodal, {{1, 2, 3, 3, 3, 3}, {}, {}}, {0, 1, 2, 2, 2, 2}).index, shared.index);
  EXPECT_NE(writer.addLocation(kNodal, {{1, 2, 3, 3, 3, 3}, {}, {}}, {0, 1, 1, 1, 1, 2}).index, shared.index);
  writer.writeRows(b, 1, std::vector<float>{4, 5, 6});
  writer.writeRows(a, 0, std::vector<float>{-1, -2, -3});
  writer.addPart("LATE");
  writer.finish();
  expectCatalogIsRight();
  const auto stored = Reader(path_).step("Step-1");
  EXPECT_THAT(rowsOf(stored->findField("A")->blocks.at(0), 0), ElementsAre(-1, -2, -3));
  EXPECT_THAT(rowsOf(stored->findField("B")->blocks.at(0), 1), ElementsAre(4, 5, 6));
  EXPECT_THAT(rowsOf(stored->findField("C")->blocks.at(0), 0), ElementsAre(7, 8, 9, 9, 9, 9));
  EXPECT_THAT(Reader(path_).parts(), ElementsAre("LATE"));
}

TEST_P(DatabaseWriterFileTest, WhatSharesAnArrayIsLaidOutTogether) {
  DatabaseWriter writer(path_);
  writer.addPart("P");
  const auto region = writer.addHistoryRegion(writer.addStep("Step-1", {}), "R", {});
  writer.addHistory(region, "H", 0, 2);
  writer.addSet({}, SetKind::node, "A", {});
  writer.layOut();
  EXPECT_THAT(failureOf([&] { writer.addSet({}, SetKind::node, "B", {}); }),
              HasSubstr("/assembly/nodeSets/B: comes after the sets beside it were laid out"));
  EXPECT_THAT(failureOf([&] { writer.addHistory(region, "G", 0, 2); }),
              HasSubstr("/history/R/outputs/G: comes after the histories beside it were laid out"));
  writer.addSet({}, SetKind::element, "B", {});
  writer.addHistory(writer.addHistoryRegion(writer.addStep("Step-2", {}), "R", {}), "H", 0, 2);
  writer.finish();
  expectCatalogIsRight();
  EXPECT_THAT(Reader(path_).sets({}, SetKind::element), ElementsAre("B"));
}

TEST_P(DatabaseWriterFileTest, SamplesThatDoNotFitAreRefused) {
  DatabaseWriter writer(path_);
  const auto region = writer.addHistoryRegion(writer.addStep("Step-1", {}), "R", {});
  const auto history = writer.addHistory(region, "H", 2, 2);
  EXPECT_THAT(failureOf([&] { writer.writeSamples(history, std::vector<float>(4)); }),
              HasSubstr("when layOut() has been called"));
  writer.layOut();
  EXPECT_THAT(failureOf([&] { writer.writeSamples(history, std::vector<float>(3)); }),
              HasSubstr("3 numbers are not 2 samples of 2"));
  EXPECT_THAT(failureOf([&] { writer.finish(); }),
              HasSubstr("/steps/Step-1/history/R/outputs/H: its samples have not come"));
  writer.writeSamples(history, std::vector<float>(4));
  EXPECT_THAT(failureOf([&] { writer.writeSamples(history, std::vector<float>(4)); }), HasSubstr("has come twice"));
}

TEST_P(DatabaseWriterFileTest, WhatCannotBeIsRefusedWhenItIsDeclared) {
  DatabaseWriter writer(path_);
  writer.addPart("P");
  writer.addInstance("I", "P");
  const auto step = writer.addStep("Step-1", {});
  writer.addFrame(step, {});
  const auto nodes = writer.addLocation(kNodal, {{1, 2, 3, 4}, {}, {}});
  const auto field = writer.addField(step, "S", kStress);
  const auto region = writer.addHistoryRegion(step, "R", {});
  writer.addHistory(region, "H", 1, 1);
  writer.addSet({}, SetKind::node, "TOP", {});
  writer.addNodes("I", {1}, {0, 0, 0});
  writer.addElements("I", "T", {1}, {1});
  const std::vector<std::pair<std::function<void()>, std::string>> cases = {
      {[&] { writer.addPart("P"); }, "/parts/P: is there already"},
      {[&] { writer.addPart("a\nb"); }, "the name has a control character"},
      {[&] { writer.addPart(""); }, "a name is empty"},
      {[&] { writer.addInstance("I", "P"); }, "/assembly/instances/I: is there already"},
      {[&] { writer.addNodes("J", {}, {}); }, "/assembly/instances/J: is not there"},
      {[&] { writer.addNodes("I", {}, {}); }, "mesh/nodes: is there already"},
      {[&] { writer.addElements("I", "T", {}, {}); }, "mesh/elements/T: is there already"},
      {[&] {
         writer.addElements("I", "Q", {1, 2}, {1, 2, 3});
       },
       "every element must have the same number of nodes"},
      {[&] { writer.addSet({}, SetKind::node, "TOP", {}); }, "/assembly/nodeSets/TOP: is there already"},
      {[&] { writer.addSet({}, SetKind::node, "X\tY", {}); }, "the name has a control character"},
      {[&] {
         writer.addSet({}, SetKind::node, "X", {{"I", {}}, {"I", {}}});
       },
       "has the instance \"I\" twice"},
      {[&] {
         writer.addSet({OwnerKind::part, "Q"}, SetKind::node, "X", {{"", {}}});
       },
       "/parts/Q: is not there"},
      {[&] {
         writer.addSet({OwnerKind::part, "P"}, SetKind::node, "X", {});
       },
       "must have one list of labels"},
      {[&] {
         writer.addLocation(kNodal, {{1}, {1}, {}});
       },
       "the labels do not fit the position nodal"},
      {[&] {
         writer.addLocation(kNodal, {{1, 2}, {}, {}}, {0});
       },
       "not one number for each row"},
      {[&] {
         writer.addLocation(kNodal, {{1, 2}, {}, {}}, {1, 0});
       },
       "in the order of their first use"},
      {[&] { writer.addStep("Step-1", {}); }, "/steps/Step-1: is there already"},
      {[&] {
         writer.addStep("Step-2", {"", 1, {1, 2}, {}, {}});
       },
       "a vector of its mass must have 3 numbers"},
      {[&] { writer.addField(step, "S", kStress); }, "/steps/Step-1/fields/S: is there already"},
      {[&] { writer.addFieldFrame(field, 1); }, "frame 1 is out of range 0..0"},
      {[&] { writer.addBlock(field, nodes, {.width = 4}); }, "rows of 4 numbers do not fit 6 component labels"},
      {[&] { writer.addBlock(field, nodes, {.width = 0}); }, "rows of 0 numbers are not possible"},
      {[&] { writer.addBlock(field, nodes, {.width = 6, .frames = std::vector<int>{1}}); }, "frame 1 is out of range"},
      {[&] {
         writer.addBlock(field, nodes, {.width = 6, .frames = std::vector<int>{0, 0}});
       },
       "its frames are not ascending"},
      {[&] { writer.addHistoryRegion(step, "R", {}); }, "/history/R: is there already"},
      {[&] {
         writer.addHistoryRegion(step, "Q", {"", 1, -1, 0, 0, "", "a\nb"});
       },
       "the name of its set has a control character"},
      {[&] { writer.addHistory(region, "H", 1, 1); }, "/outputs/H: is there already"},
      {[&] { writer.addHistory(region, "G", -1, 1); }, "-1 samples of 1 numbers are not possible"},
  };
  for (const auto& [action, message] : cases) EXPECT_THAT(failureOf(action), HasSubstr(message)) << message;
}

TEST_P(DatabaseWriterFileTest, NothingIsLeftOfAWriterThatDidNotFinish) {
  {
    DatabaseWriter writer(path_);
    const auto nodes = writer.addLocation(kNodal, {{1}, {}, {}});
    const auto step = writer.addStep("Step-1", {});
    writer.addFrame(step, {});
    writer.addBlock(writer.addField(step, "NT", kTemperature), nodes, {});
    writer.layOut();
    EXPECT_FALSE(std::filesystem::exists(path_));
  }
  EXPECT_EQ(directory_.entries(), 0U);
}

// Many objects, more structure than one piece of it holds.
TEST_P(DatabaseWriterFileTest, TheCatalogIsLastHoweverMuchStructureThereIs) {
  DatabaseWriter writer(path_);
  std::vector<std::pair<DatabaseWriter::Block, int>> blocks;
  for (int l = 0; l < 120; ++l) {
    const auto location = writer.addLocation(kNodal, {{l, l + 1}, {}, {}});
    const auto step = writer.addStep("Step-" + std::to_string(l), {});
    for (int frame = 0; frame < 3; ++frame) writer.addFrame(step, {frame, 0.5 * frame, "Increment"});
    for (int f = 0; f < 10; ++f) {
      const auto field = writer.addField(step, "F" + std::to_string(f), kTemperature);
      blocks.emplace_back(writer.addBlock(field, location, {}), f);
    }
    for (int s = 0; s < 20; ++s) writer.addSet({}, SetKind::node, "S" + std::to_string(20 * l + s), {{"I", {l, s}}});
  }
  writer.layOut();
  for (const auto& [block, f] : blocks) {
    for (int frame = 0; frame < 3; ++frame) {
      const auto value = static_cast<float>(frame * 10 + f);
      writer.writeRows(block, frame, std::vector<float>{value, value});
    }
  }
  writer.finish();
  expectCatalogIsRight();
  EXPECT_THAT(rowsOf(Reader(path_).step("Step-119")->findField("F9")->blocks.at(0), 2), ElementsAre(29, 29));
}

}  // namespace
}  // namespace odbstore
