// The writer's steps, locations and numbers of either precision, and the names of its files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "odbstore/database_writer_fixture.h"
#include "odbwriter/block_series.h"

namespace odbstore {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using DatabaseWriterNamesTest = DatabaseWriterTest;

TEST_F(DatabaseWriterNamesTest, StepsKeepTheirOrderAndMassMayBeAbsent) {
  DatabaseWriter writer(path_);
  writer.addStep("Step-2", {"second by name", 2.5, {0, 1.5, 3}, {1, 2, 3, 4, 5, 6}, {}});
  writer.addStep("Step-1", {});
  writer.finish();
  expectCatalogIsRight();
  const Reader reader(path_);
  EXPECT_THAT(reader.steps(), ElementsAre("Step-2", "Step-1"));
  EXPECT_EQ(reader.step("Step-2")->info().mass, 2.5);
  EXPECT_THAT(reader.step("Step-2")->info().massCenter, ElementsAre(0, 1.5, 3));
  EXPECT_THAT(reader.step("Step-2")->info().inertiaAboutOrigin, IsEmpty());
  EXPECT_EQ(reader.step("Step-1")->info().mass, -1.0);
  EXPECT_EQ(reader.step("Step-1")->frameCount(), 0);
}

TEST_F(DatabaseWriterNamesTest, ManyStepsKeepTheirOrderToo) {
  DatabaseWriter writer(path_);
  std::vector<std::string> names;
  for (int i = 40; i > 0; --i) names.push_back("Step-" + std::to_string(i));
  for (const std::string& name : names) writer.addStep(name, {});
  writer.finish();
  EXPECT_EQ(Reader(path_).steps(), names);
}

TEST_F(DatabaseWriterNamesTest, EqualLocationsAreStoredOnce) {
  DatabaseWriter writer(path_);
  const auto a = writer.addLocation(kNodal, {{1, 2, 3}, {}, {}});
  const auto b = writer.addLocation(kNodal, {{1, 2, 4}, {}, {}});
  const auto c = writer.addLocation(kNodal, {{1, 2, 3}, {}, {}});
  EXPECT_EQ(a.index, c.index);
  EXPECT_NE(a.index, b.index);
  const auto d = writer.addLocation({"J", Position::nodal, "", 0, ""}, {{1, 2, 3}, {}, {}});
  EXPECT_NE(a.index, d.index);
  EXPECT_NE(writer.addLocation(kNodal, {{1, 2, 3}, {}, {}}, {0, 0, 0}).index, a.index);
}

TEST_F(DatabaseWriterNamesTest, AFileOfThatNameIsReplacedOnlyByACompleteOne) {
  std::ofstream(path_) << "old";
  {
    DatabaseWriter writer(path_);
    writer.addPart("P");
  }
  EXPECT_EQ(std::filesystem::file_size(path_), 3U);
  DatabaseWriter writer(path_);
  writer.finish();
  EXPECT_THAT(Reader(path_).steps(), IsEmpty());
  EXPECT_EQ(directory_.entries(), 1U);
}

TEST_F(DatabaseWriterNamesTest, AMissingDirectoryIsNamed) {
  EXPECT_THAT(failureOf([&] { DatabaseWriter writer(directory_.file("no/such/job.odb")); }),
              HasSubstr("no/such/job.odb: cannot be created: No such file or directory"));
}

using DatabaseWriterPrecisionTest = DatabaseWriterTest;

TEST_P(DatabaseWriterPrecisionTest, DoublesComeBackToTheLastBit) {
  const std::vector<double> rows = {1.0 / 3.0, -1e300, 5e-324};
  DatabaseWriter writer(path_, GetParam());
  const auto nodes = writer.addLocation(kNodal, {{1, 2, 3}, {}, {}});
  const auto step = writer.addStep("Step-1", {});
  for (int i = 0; i < 2; ++i) writer.addFrame(step, {i, 0, ""});
  const auto block = writer.addBlock(writer.addField(step, "NT", kTemperature), nodes, {.isDouble = true});
  for (int i = 0; i < 2; ++i) writer.writeRows(block, i, rows);
  writer.finish();
  const auto stored = Reader(path_).step("Step-1");
  std::vector<double> back(3);
  stored->fields().at(0).blocks.at(0).read(1, back.data());
  EXPECT_TRUE(stored->fields()[0].blocks[0].isDouble());
  EXPECT_EQ(back, rows);
}

TEST_P(DatabaseWriterPrecisionTest, RowsAreReadInEitherPrecision) {
  DatabaseWriter writer(path_, GetParam());
  const auto nodes = writer.addLocation(kNodal, {{1, 2, 3}, {}, {}});
  const auto step = writer.addStep("Step-1", {});
  writer.addFrame(step, {});
  const auto narrow = writer.addBlock(writer.addField(step, "NT", kTemperature), nodes, {});
  const auto wide = writer.addBlock(writer.addField(step, "NT2", kTemperature), nodes, {.isDouble = true});
  writer.writeRows(narrow, 0, std::vector<float>{1, 2, 0.5F});
  writer.writeRows(wide, 0, std::vector<double>{4, 5, 0.25});
  writer.finish();
  const auto stored = Reader(path_).step("Step-1");
  std::vector<double> doubles(3);
  stored->fields().at(0).blocks.at(0).read(0, doubles.data());
  EXPECT_THAT(doubles, ElementsAre(1.0, 2.0, 0.5));
  std::vector<float> floats(3);
  stored->fields().at(1).blocks.at(0).read(0, floats.data());
  EXPECT_THAT(floats, ElementsAre(4.0F, 5.0F, 0.25F));
}

INSTANTIATE_TEST_SUITE_P(Storage, DatabaseWriterPrecisionTest,
                         testing::Values(WriterOptions{false, false}, WriterOptions{true, false},
                                         WriterOptions{false, true}, WriterOptions{true, true}));

TEST(BlockSeriesTest, RowsOfAFrameJoinBlocksInTheirOrder) {
  const BlockKey one{0, 2, {}, false, 1};
  const BlockKey two{1, 2, {}, false, 1};
  BlockSeries series;
  EXPECT_EQ(series.next(2, one), 0U);
  EXPECT_EQ(series.next(2, two), 1U);
  EXPECT_EQ(series.next(0, two), 1U);
  // The first block would come before the one that the frame's rows have joined already.
  EXPECT_EQ(series.next(0, one), 2U);
  EXPECT_EQ(series.next(1, one), 0U);
  EXPECT_EQ(series.next(1, one), 2U);
  ASSERT_EQ(series.count(), 3U);
  EXPECT_EQ(series.key(2), one);
}

TEST(BlockSeriesTest, RowsOfAnotherKindAreAnotherBlock) {
  const BlockKey plain{0, 5, {"11", "22"}, false, 2};
  BlockSeries series;
  std::size_t expected = 0;
  for (const BlockKey& key : {plain, BlockKey{0, 7, {"11", "22"}, false, 2}, BlockKey{0, 5, {"11", "12"}, false, 2},
                              BlockKey{0, 5, {"11", "22"}, true, 2}, BlockKey{1, 5, {"11", "22"}, false, 2}}) {
    EXPECT_EQ(series.next(static_cast<int>(expected), key), expected);
    ++expected;
  }
  EXPECT_EQ(series.next(9, plain), 0U);
}

}  // namespace
}  // namespace odbstore
