#include "support/writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "odbstore/reader.h"
#include "odbstore/results_for_writers.h"
#include "support/temporary_directory.h"

namespace odbstore {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class WriterTest : public testing::Test {
 protected:
  std::vector<float> rowsOf(const StoredBlock& block, int frame) {
    std::vector<float> rows(static_cast<std::size_t>(block.rows() * block.width()));
    block.read(frame, rows.data());
    return rows;
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
};

TEST_F(WriterTest, ModelComesBackAsWritten) {
  Writer writer(path_);
  writer.setTitle("A plate");
  writer.setProducer("a solver");
  writer.setAssemblyName("ASSEMBLY");
  writer.setSymmetryAxis({0, 0, 0, 0, 0, 1});
  writer.addPart("PLATE");
  writer.addInstance("PLATE-1", "PLATE");
  writer.addNodes("PLATE-1", std::vector{1, 2}, std::vector{0.0, 0.0, 0.0, 1.0, 0.0, 0.0});
  writer.addElements("PLATE-1", "T3D2", std::vector{7}, std::vector{1, 2});
  writer.addSet({}, SetKind::node, "a/b", std::vector<SetMembers>{{"PLATE-1", {2, 1}}});
  writer.addSet({}, SetKind::element, "NONE", {});
  writer.addSet({OwnerKind::instance, "PLATE-1"}, SetKind::element, "ALL", std::vector<SetMembers>{{"", {7}}});
  writer.addSet({OwnerKind::part, "PLATE"}, SetKind::node, "TIP", std::vector<SetMembers>{{"", {2}}});
  writer.finish();

  const Reader reader(path_);
  EXPECT_EQ(reader.name(), path_);
  EXPECT_EQ(reader.title(), "A plate");
  EXPECT_EQ(reader.producer(), "a solver");
  EXPECT_EQ(reader.assemblyName(), "ASSEMBLY");
  EXPECT_EQ(reader.symmetryAxis(), (std::array<float, 6>{0, 0, 0, 0, 0, 1}));
  EXPECT_THAT(reader.parts(), ElementsAre("PLATE"));
  ASSERT_EQ(reader.instances().size(), 1U);
  EXPECT_EQ(reader.instances()[0].part, "PLATE");
  EXPECT_THAT(reader.sets({}, SetKind::node), ElementsAre("a/b"));
  EXPECT_THAT(reader.sets({}, SetKind::element), ElementsAre("NONE"));
  const auto members = reader.setMembers({}, SetKind::node, "a/b");
  ASSERT_EQ(members.size(), 1U);
  EXPECT_EQ(members[0].instance, "PLATE-1");
  EXPECT_THAT(members[0].labels, ElementsAre(2, 1));
  EXPECT_THAT(reader.setMembers({}, SetKind::element, "NONE"), IsEmpty());
  EXPECT_THAT(reader.setMembers({OwnerKind::part, "PLATE"}, SetKind::node, "TIP")[0].labels, ElementsAre(2));
}

TEST_F(WriterTest, StepsKeepTheirOrderAndMassMayBeAbsent) {
  Writer writer(path_);
  writer.addStep("Step-2", {"second by name", 2.5, {0, 1.5, 3}, {1, 2, 3, 4, 5, 6}, {}});
  writer.addStep("Step-1", {});
  writer.finish();

  const Reader reader(path_);
  EXPECT_THAT(reader.steps(), ElementsAre("Step-2", "Step-1"));
  EXPECT_EQ(reader.step("Step-2")->info().mass, 2.5);
  EXPECT_THAT(reader.step("Step-2")->info().massCenter, ElementsAre(0, 1.5, 3));
  EXPECT_THAT(reader.step("Step-2")->info().inertiaAboutOrigin, IsEmpty());
  EXPECT_EQ(reader.step("Step-1")->info().mass, -1.0);
  EXPECT_EQ(reader.step("Step-1")->frameCount(), 0);
}

TEST_F(WriterTest, ManyStepsKeepTheirOrderToo) {
  Writer writer(path_);
  std::vector<std::string> names;
  for (int i = 40; i > 0; --i) names.push_back("Step-" + std::to_string(i));
  for (const std::string& name : names) writer.addStep(name, {});
  writer.finish();
  EXPECT_EQ(Reader(path_).steps(), names);
}

TEST_F(WriterTest, EqualLocationsAreStoredOnce) {
  Writer writer(path_);
  const LocationInfo nodal{"I", Position::nodal, "", 0, ""};
  const LocationId a = writer.addLocation(nodal, {{1, 2, 3}, {}, {}});
  const LocationId b = writer.addLocation(nodal, {{1, 2, 4}, {}, {}});
  const LocationId c = writer.addLocation(nodal, {{1, 2, 3}, {}, {}});
  EXPECT_EQ(a.index, c.index);
  EXPECT_NE(a.index, b.index);
  const LocationId d = writer.addLocation({"J", Position::nodal, "", 0, ""}, {{1, 2, 3}, {}, {}});
  EXPECT_NE(a.index, d.index);
}

TEST_F(WriterTest, FramesMissFieldsAndBlocksAndComeBackEachWithItsOwn) {
  Writer writer(path_);
  const LocationId two = writer.addLocation({"I", Position::nodal, "", 0, ""}, {{1, 2}, {}, {}});
  const LocationId one = writer.addLocation({"I", Position::nodal, "", 0, ""}, {{9}, {}, {}});
  const StepId step = writer.addStep("Step-1", {});
  const FrameId first = writer.addFrame(step, {0, 0.0, ""});
  const FrameId second = writer.addFrame(step, {1, 0.5, "Increment 1"});
  const FrameId third = writer.addFrame(step, {2, 1.0, "Increment 2"});
  const FieldId later = writer.addField(third, "NT", kTemperature);
  writer.addBlock(later, one, std::vector<float>{7});
  writer.addBlock(later, two, std::vector<float>{8, 9});
  const FieldId earlier = writer.addField(first, "NT", kTemperature);
  writer.addBlock(earlier, two, std::vector<float>{1, 2});
  writer.addBlock(earlier, one, std::vector<float>{3});
  static_cast<void>(second);
  writer.finish();

  const Reader reader(path_);
  const auto stored = reader.step("Step-1");
  ASSERT_EQ(stored->frameCount(), 3);
  EXPECT_EQ(stored->frame(1).description, "Increment 1");
  const StoredField& field = stored->fields().at(0);
  EXPECT_THAT(field.frames(), ElementsAre(0, 2));
  std::vector<std::vector<float>> inFirst;
  std::vector<std::vector<float>> inThird;
  for (const StoredBlock& block : field.blocks) {
    EXPECT_FALSE(block.existsIn(1));
    if (block.existsIn(0)) inFirst.push_back(rowsOf(block, 0));
    if (block.existsIn(2)) inThird.push_back(rowsOf(block, 2));
  }
  EXPECT_THAT(inFirst, ElementsAre(ElementsAre(1, 2), ElementsAre(3)));
  EXPECT_THAT(inThird, ElementsAre(ElementsAre(7), ElementsAre(8, 9)));
}

TEST_F(WriterTest, BlocksOfAFieldShareOneDataSetOverTheFrames) {
  Writer writer(path_);
  const LocationId location = writer.addLocation({"I", Position::elementNodal, "C3D4", 0, ""}, {{1, 2}, {5, 5}, {}});
  const StepId step = writer.addStep("Step-1", {});
  for (int i = 0; i < 3; ++i) {
    const FieldId field = writer.addField(writer.addFrame(step, {i, 0.1 * i, ""}), "S", kStress);
    std::vector<float> rows(12);
    for (std::size_t k = 0; k < rows.size(); ++k) rows[k] = static_cast<float>(100 * i) + static_cast<float>(k);
    writer.addBlock(field, location, rows);
  }
  writer.finish();

  const Reader reader(path_);
  const auto stored = reader.step("Step-1");
  const StoredField& field = stored->fields().at(0);
  ASSERT_EQ(field.blocks.size(), 1U);
  EXPECT_EQ(*field.infoIn(1), kStress);
  EXPECT_EQ(field.blocks[0].width(), 6);
  EXPECT_EQ(field.blocks[0].location()->info().elementType, "C3D4");
  EXPECT_THAT(field.blocks[0].location()->elementLabels(), ElementsAre(5, 5));
  EXPECT_EQ(rowsOf(field.blocks[0], 2)[11], 211.0F);
}

TEST_F(WriterTest, KeptRowsAreExpandedByTheirPlaces) {
  Writer writer(path_);
  const LocationId tets = writer.addLocation({"I", Position::elementNodal, "C3D4", 0, ""}, {{1, 2, 3}, {5, 5, 6}, {}});
  const LocationId wedges = writer.addLocation({"I", Position::elementNodal, "C3D6", 0, ""}, {{2}, {7}, {}});
  const KeptPlaces ofTets = writer.keepPlaces(std::vector<int>{2, 0, 2});
  const KeptPlaces ofWedges = writer.keepPlaces(std::vector<int>{1});
  const StepId step = writer.addStep("Step-1", {});
  for (int i = 0; i < 2; ++i) {
    const FieldId field = writer.addField(writer.addFrame(step, {i, 0.1 * i, ""}), "S", kStress);
    std::vector<float> rows(18);
    for (std::size_t k = 0; k < rows.size(); ++k) rows[k] = static_cast<float>(100 * i) + static_cast<float>(k);
    const KeptRows kept = writer.keepRows(rows, 6);
    writer.addBlock(field, tets, kept, ofTets);
    writer.addBlock(field, wedges, kept, ofWedges);
  }
  writer.finish();

  const Reader reader(path_);
  const auto stored = reader.step("Step-1");
  const StoredField& field = stored->fields().at(0);
  ASSERT_EQ(field.blocks.size(), 2U);
  EXPECT_THAT(rowsOf(field.blocks[0], 0),
              ElementsAre(12, 13, 14, 15, 16, 17, 0, 1, 2, 3, 4, 5, 12, 13, 14, 15, 16, 17));
  EXPECT_THAT(rowsOf(field.blocks[1], 0), ElementsAre(6, 7, 8, 9, 10, 11));
  EXPECT_EQ(rowsOf(field.blocks[0], 1)[6], 100.0F);
  EXPECT_THAT(rowsOf(field.blocks[1], 1), ElementsAre(106, 107, 108, 109, 110, 111));
}

TEST_F(WriterTest, KeptRowsThatDoNotFillTheirLocationAreRefused) {
  Writer writer(path_);
  const LocationId location = writer.addLocation({"I", Position::nodal, "", 0, ""}, {{1, 2}, {}, {}});
  const FieldId field = writer.addField(writer.addFrame(writer.addStep("Step-1", {}), {}), "S", kStress);
  const KeptRows rows = writer.keepRows(std::vector<float>(12), 6);
  EXPECT_THAT(failureOf([&] { writer.addBlock(field, location, rows, writer.keepPlaces(std::vector<int>{0})); }),
              HasSubstr("1 places do not fill 2 rows"));
  EXPECT_THAT(failureOf([&] {
                writer.addBlock(field, location, rows, writer.keepPlaces(std::vector<int>{0, 2}));
              }),
              HasSubstr("the row 2 is not among 2 rows"));
  EXPECT_THAT(failureOf([&] { writer.keepPlaces(std::vector<int>{0, -1}); }), HasSubstr("the place -1"));
  EXPECT_THAT(failureOf([&] { writer.keepRows(std::vector<float>(7), 6); }), HasSubstr("7 numbers are no rows of 6"));
  const KeptRows narrow = writer.keepRows(std::vector<float>(8), 4);
  EXPECT_THAT(failureOf([&] {
                writer.addBlock(field, location, narrow, writer.keepPlaces(std::vector<int>{0, 1}));
              }),
              HasSubstr("rows of 4 numbers do not fit 6 component labels"));
}

class WriterStorageTest : public WriterTest, public testing::WithParamInterface<WriterOptions> {};

TEST_P(WriterStorageTest, DoublesComeBackToTheLastBit) {
  Writer writer(path_, GetParam());
  const LocationId location = writer.addLocation({"I", Position::nodal, "", 0, ""}, {{1, 2, 3}, {}, {}});
  const StepId step = writer.addStep("Step-1", {});
  const std::vector<double> rows = {1.0 / 3.0, -1e300, 5e-324};
  for (int i = 0; i < 2; ++i) {
    writer.addBlock(writer.addField(writer.addFrame(step, {i, 0, ""}), "NT", kTemperature), location, rows);
  }
  writer.finish();
  const Reader reader(path_);
  const auto stored = reader.step("Step-1");
  std::vector<double> back(3);
  stored->fields().at(0).blocks.at(0).read(1, back.data());
  EXPECT_TRUE(stored->fields()[0].blocks[0].isDouble());
  EXPECT_EQ(back, rows);
}

TEST_P(WriterStorageTest, RowsAreReadInEitherPrecision) {
  Writer writer(path_, GetParam());
  const LocationId location = writer.addLocation({"I", Position::nodal, "", 0, ""}, {{1, 2, 3}, {}, {}});
  const FrameId frame = writer.addFrame(writer.addStep("Step-1", {}), {0, 0, ""});
  writer.addBlock(writer.addField(frame, "NT", kTemperature), location, std::vector<float>{1, 2, 0.5F});
  writer.addBlock(writer.addField(frame, "NT2", kTemperature), location, std::vector<double>{4, 5, 0.25});
  writer.finish();
  const auto stored = Reader(path_).step("Step-1");
  std::vector<double> doubles(3);
  stored->fields().at(0).blocks.at(0).read(0, doubles.data());
  EXPECT_THAT(doubles, ElementsAre(1.0, 2.0, 0.5));
  std::vector<float> floats(3);
  stored->fields().at(1).blocks.at(0).read(0, floats.data());
  EXPECT_THAT(floats, ElementsAre(4.0F, 5.0F, 0.25F));
}

INSTANTIATE_TEST_SUITE_P(Storage, WriterStorageTest,
                         testing::Values(WriterOptions{false, false}, WriterOptions{true, false},
                                         WriterOptions{false, true}, WriterOptions{true, true}));

TEST_F(WriterTest, HistoriesComeBackAsWritten) {
  Writer writer(path_);
  const StepId step = writer.addStep("Step-1", {});
  const HistoryRegionId region = writer.addHistoryRegion(step, "Node I.7", {"tip", 7, -1, 0, 0, "", "TIP"});
  writer.addHistoryOutput(region, "U2", {{0, 0, 0.5F, 12.25F}, 2, 2});
  writer.addHistoryOutput(region, "RF", {{}, 0, 2});
  writer.finish();
  const auto stored = Reader(path_).step("Step-1");
  EXPECT_THAT(stored->historyRegions(), ElementsAre("Node I.7"));
  const StoredHistoryRegion back = stored->historyRegion("Node I.7");
  EXPECT_EQ(back.info.node, 7);
  EXPECT_EQ(back.info.element, -1);
  EXPECT_EQ(back.info.set, "TIP");
  EXPECT_THAT(back.outputs, ElementsAre("RF", "U2"));
  EXPECT_THAT(stored->historySamples("Node I.7", "U2").numbers, ElementsAre(0, 0, 0.5F, 12.25F));
  EXPECT_EQ(stored->historySamples("Node I.7", "RF").samples, 0);
}

TEST_F(WriterTest, NothingIsLeftOfAWriterThatDidNotFinish) {
  {
    Writer writer(path_);
    writer.addPart("P");
    EXPECT_FALSE(std::filesystem::exists(path_));
  }
  EXPECT_EQ(directory_.entries(), 0U);
}

TEST_F(WriterTest, AFileOfThatNameIsReplacedOnlyByACompleteOne) {
  std::ofstream(path_) << "old";
  {
    Writer writer(path_);
    writer.addPart("P");
  }
  EXPECT_EQ(std::filesystem::file_size(path_), 3U);
  Writer writer(path_);
  writer.finish();
  EXPECT_THAT(Reader(path_).steps(), testing::IsEmpty());
  EXPECT_EQ(directory_.entries(), 1U);
}

TEST_F(WriterTest, AMissingDirectoryIsNamed) {
  EXPECT_THAT(failureOf([&] { Writer writer(directory_.file("no/such/job.odb")); }),
              HasSubstr("no/such/job.odb: cannot be created: No such file or directory"));
}

TEST_F(WriterTest, ANameUsedTwiceIsRefused) {
  Writer writer(path_);
  writer.addPart("P");
  EXPECT_THAT(failureOf([&] { writer.addPart("P"); }), HasSubstr("job.odb: /parts/P: is there already"));
}

TEST_F(WriterTest, RowsThatDoNotFillTheirLocationAreRefused) {
  Writer writer(path_);
  const LocationId location = writer.addLocation({"I", Position::nodal, "", 0, ""}, {{1, 2}, {}, {}});
  const FieldId field = writer.addField(writer.addFrame(writer.addStep("Step-1", {}), {}), "S", kStress);
  EXPECT_THAT(failureOf([&] { writer.addBlock(field, location, std::vector<float>(13)); }),
              HasSubstr("13 numbers do not fill 2 rows"));
  EXPECT_THAT(failureOf([&] { writer.addBlock(field, location, std::vector<float>(8)); }),
              HasSubstr("rows of 4 numbers do not fit 6 component labels"));
}

TEST_F(WriterTest, AFieldMayBeDescribedDifferentlyInALaterFrame) {
  Writer writer(path_);
  const LocationId location = writer.addLocation({"I", Position::nodal, "", 0, ""}, {{1, 2}, {}, {}});
  const StepId step = writer.addStep("Step-1", {});
  FieldInfo renamed = kTemperature;
  renamed.description = "Temperature at nodes";
  writer.addBlock(writer.addField(writer.addFrame(step, {}), "NT", kTemperature), location, std::vector<float>{1, 2});
  writer.addBlock(writer.addField(writer.addFrame(step, {}), "NT", kStress), location, std::vector<float>(12, 3));
  writer.addBlock(writer.addField(writer.addFrame(step, {}), "NT", renamed), location, std::vector<float>{5, 6});
  writer.finish();
  const auto stored = Reader(path_).step("Step-1");
  const StoredField& field = stored->fields().at(0);
  EXPECT_EQ(*field.infoIn(0), kTemperature);
  EXPECT_EQ(*field.infoIn(1), kStress);
  EXPECT_EQ(*field.infoIn(2), renamed);
  ASSERT_EQ(field.blocks.size(), 2U);
  EXPECT_THAT(field.blocks[0].frames(), ElementsAre(0, 2));
  EXPECT_EQ(field.blocks[0].type(), 2);
  EXPECT_EQ(field.blocks[1].type(), 5);
  EXPECT_THAT(field.blocks[1].componentLabels(), ElementsAre("11", "22", "33", "12", "13", "23"));
  EXPECT_THAT(rowsOf(field.blocks[0], 2), ElementsAre(5, 6));
}

TEST_F(WriterTest, LabelsThatDoNotFitThePositionAreRefused) {
  Writer writer(path_);
  EXPECT_THAT(failureOf([&] {
                writer.addLocation({"I", Position::nodal, "", 0, ""}, {{1}, {1}, {}});
              }),
              HasSubstr("the labels do not fit the position nodal"));
  EXPECT_THAT(failureOf([&] {
                writer.addLocation({"I", Position::elementNodal, "", 0, ""}, {{1, 2}, {1}, {}});
              }),
              HasSubstr("the labels do not fit the position elementNodal"));
}

}  // namespace
}  // namespace odbstore
