// Rows of files of layout 3: what is delivered, and what is read back.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <numeric>

#include "base/descriptor.h"
#include "odbstore/database_writer_fixture.h"

namespace odbstore {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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

}  // namespace
}  // namespace odbstore
