// What a writer of layout 3 refuses, and what it leaves.
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

using DatabaseWriterRefusals = DatabaseWriterTest;
INSTANTIATE_TEST_SUITE_P(Plain, DatabaseWriterRefusals, testing::Values(WriterOptions{}));

TEST_P(DatabaseWriterRefusals, WhatHasNotComeIsNamed) {
  DatabaseWriter writer(path_);
  const auto nodes = writer.addLocation(kNodal, {{1}, {}, {}});
  const auto step = writer.addStep("Step-1", {});
  for (int i = 0; i < 3; ++i) writer.addFrame(step, {});
  const auto block = writer.addBlock(writer.addField(step, "NT", kTemperature), nodes, {});
  writer.layOut();
  writer.writeRows(block, 0, std::vector<float>{1});
  writer.writeRows(block, 2, std::vector<float>{1});
  EXPECT_THAT(failureOf([&] { writer.finish(); }),
              HasSubstr("job.odb: /steps/Step-1/fields/NT/blocks/0/data: the rows of frame 1 were not written"));
  EXPECT_THAT(failureOf([&] { writer.writeRows(block, 2, std::vector<float>{1}); }),
              HasSubstr("frame 2 was written twice"));
  EXPECT_THAT(failureOf([&] { writer.writeRows(block, 3, std::vector<float>{1}); }),
              HasSubstr("does not exist in frame 3"));
  EXPECT_THAT(failureOf([&] {
                writer.writeRows(block, 1, std::vector<float>{1, 2});
              }),
              HasSubstr("2 numbers do not fill 1 rows of 1"));
  EXPECT_THAT(failureOf([&] { writer.writeRows(block, 1, std::vector<double>{1}); }),
              HasSubstr("rows have the other precision"));
}

TEST_P(DatabaseWriterRefusals, SamplesThatDoNotFitAreRefused) {
  DatabaseWriter writer(path_);
  const auto region = writer.addHistoryRegion(writer.addStep("Step-1", {}), "R", {});
  const auto history = writer.addHistory(region, "H", 2, 2);
  EXPECT_THAT(failureOf([&] { writer.writeSamples(history, std::vector<float>(4)); }),
              HasSubstr("samples can only be written after layOut()"));
  writer.layOut();
  EXPECT_THAT(failureOf([&] { writer.writeSamples(history, std::vector<float>(3)); }),
              HasSubstr("3 numbers are not 2 samples of 2"));
  EXPECT_THAT(failureOf([&] { writer.finish(); }),
              HasSubstr("/steps/Step-1/history/R/outputs/H: its samples were not written"));
  writer.writeSamples(history, std::vector<float>(4));
  EXPECT_THAT(failureOf([&] { writer.writeSamples(history, std::vector<float>(4)); }), HasSubstr("was written twice"));
}

TEST_P(DatabaseWriterRefusals, WhatCannotBeIsRefusedWhenItIsDeclared) {
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
       "must have one number for each row"},
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
      {[&] { writer.addBlock(field, nodes, {.width = 0}); }, "rows cannot have 0 numbers"},
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
      {[&] { writer.addHistory(region, "G", -1, 1); }, "there cannot be -1 samples of 1 numbers"},
  };
  for (const auto& [action, message] : cases) EXPECT_THAT(failureOf(action), HasSubstr(message)) << message;
}

TEST_P(DatabaseWriterRefusals, NothingIsLeftOfAWriterThatDidNotFinish) {
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

}  // namespace
}  // namespace odbstore
