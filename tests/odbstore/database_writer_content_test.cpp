// All else in files of layout 3: model, fields, histories, catalog.
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

TEST_P(DatabaseWriterFileTest, WhatSharesAnArrayIsLaidOutTogether) {
  DatabaseWriter writer(path_);
  writer.addPart("P");
  const auto region = writer.addHistoryRegion(writer.addStep("Step-1", {}), "R", {});
  writer.addHistory(region, "H", 0, 2);
  writer.addSet({}, SetKind::node, "A", {});
  writer.layOut();
  EXPECT_THAT(failureOf([&] { writer.addSet({}, SetKind::node, "B", {}); }),
              HasSubstr("/assembly/nodeSets/B: comes after the other sets of its owner were laid out"));
  EXPECT_THAT(failureOf([&] { writer.addHistory(region, "G", 0, 2); }),
              HasSubstr("/history/R/outputs/G: comes after the other histories of its step were laid out"));
  writer.addSet({}, SetKind::element, "B", {});
  writer.addHistory(writer.addHistoryRegion(writer.addStep("Step-2", {}), "R", {}), "H", 0, 2);
  writer.finish();
  expectCatalogIsRight();
  EXPECT_THAT(Reader(path_).sets({}, SetKind::element), ElementsAre("B"));
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
