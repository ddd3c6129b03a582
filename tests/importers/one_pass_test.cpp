// How rows of a run find their places in one pass, and what becomes of those that are not as the outline promised.
#include <gmock/gmock.h>

#include "importers/run/run_import.h"
#include "importers/run/sink.h"
#include "odbstore/reader.h"
#include "support/temporary_directory.h"

namespace importers {
namespace {

using odbstore::Position;
using testing::ElementsAre;
using testing::SizeIs;

// The rows of a field in one frame, one after the other as they are delivered.
struct Delivery {
  RowsId id;
  std::vector<int> nodes;
  std::vector<float> values;
};

const odbstore::HistorySamples kSamples{{0, 1, 1, 2}, 2, 2};

// A run of two tetrahedra that share three nodes.
class TestSource : public Source {
 public:
  TestSource(Outline outline, std::vector<Delivery> deliveries, const WarningSink& warn)
      : outline_(std::move(outline)), deliveries_(std::move(deliveries)), warn_(onceOnly(warn)) {}

  Outline outline() override { return outline_; }

  void deliver(const Choice&, Sink& sink, const ProgressSink&) override {
    ++passes;
    warn_(base::warning({"job"}, "a warning of the source"));
    sink.nodes(std::vector<int>{1, 2, 3, 4, 5}, std::vector<double>(15), {"job", 1});
    sink.elements({"C3D4", 4, true, {7, 8}, {1, 2, 3, 4, 2, 3, 4, 5}}, {"job", 2});
    for (const Delivery& rows : deliveries_) {
      if (!sink.takes(rows.id)) continue;
      sink.rows(rows.id, Position::nodal, {rows.nodes, {}, {}}, std::span<const float>(rows.values), {"job", 3});
    }
    sink.history(0, "Node 5", {"", 5, -1, 0, 0, "", ""}, "U1", kSamples);
  }

  int passes = 0;

 private:
  Outline outline_;
  std::vector<Delivery> deliveries_;
  WarningSink warn_;
};

class OnePassTest : public testing::Test {
 protected:
  // A step with this field in so many frames, each with as many rows.
  static Outline outlineOf(odbstore::FieldInfo info, const std::vector<std::size_t>& rowsOfFrame) {
    Outline outline;
    OutlineStep& step = outline.steps.emplace_back();
    step.number = 1;
    step.name = "Step-1";
    OutlineField& field = step.fields.emplace_back(OutlineField{"F", "F", std::move(info), false, {}});
    for (std::size_t frame = 0; frame < rowsOfFrame.size(); ++frame) {
      step.frames.push_back({static_cast<int>(frame), 0.0, ""});
      if (rowsOfFrame[frame] > 0) field.frames.push_back({frame, rowsOfFrame[frame], 1});
    }
    return outline;
  }

  // Imports and returns the field.
  const odbstore::StoredField& import(Outline outline, std::vector<Delivery> deliveries) {
    TestSource source(std::move(outline), std::move(deliveries), warn_);
    runImport(source, {"job", path_, {}, {}}, warn_);
    passes_ = source.passes;
    step_ = odbstore::Reader(path_).step("Step-1");
    return step_->fields().at(0);
  }

  static std::vector<float> rowsOf(const odbstore::StoredBlock& block, int frame) {
    std::vector<float> rows(static_cast<std::size_t>(block.rows() * block.width()));
    block.read(frame, rows.data());
    return rows;
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
  std::vector<std::string> said_;
  WarningSink warn_ = [this](const base::Diagnostic& said) { said_.push_back(said.reason); };
  std::shared_ptr<const odbstore::StoredStep> step_;
  int passes_ = 0;
};

const odbstore::FieldInfo kScalar{"", 2, {}, {}, false};
const odbstore::FieldInfo kSurfaceTensor{"", 7, {"11", "22", "12"}, {}, false};

TEST_F(OnePassTest, FramesThatAreAlikeShareABlockInWhateverOrderTheyCome) {
  const odbstore::StoredField& field =
      import(outlineOf(kScalar, {2, 3, 2}),
             {{{0, 0, 2}, {1, 5}, {21, 25}}, {{0, 0, 1}, {1, 2, 3}, {11, 12, 13}}, {{0, 0, 0}, {1, 5}, {1, 5}}});
  EXPECT_EQ(passes_, 1);
  ASSERT_THAT(field.blocks, SizeIs(2));
  EXPECT_THAT(field.blocks[0].frames(), ElementsAre(0, 2));
  EXPECT_THAT(rowsOf(field.blocks[0], 0), ElementsAre(1, 5));
  EXPECT_THAT(rowsOf(field.blocks[0], 2), ElementsAre(21, 25));
  EXPECT_THAT(rowsOf(field.blocks[1], 1), ElementsAre(11, 12, 13));
}

TEST_F(OnePassTest, TensorsAtNodesAreStoredOnceForEachNodeThatElementsHave) {
  const odbstore::StoredField& field =
      import(outlineOf(kSurfaceTensor, {5}),
             {{{0, 0, 0}, {5, 4, 3, 2, 1}, {51, 52, 53, 41, 42, 43, 31, 32, 33, 21, 22, 23, 11, 12, 13}}});
  const odbstore::StoredBlock& block = field.blocks.at(0);
  EXPECT_EQ(block.location()->info().elementType, "C3D4");
  EXPECT_THAT(block.location()->elementLabels(), ElementsAre(7, 7, 7, 7, 8, 8, 8, 8));
  EXPECT_THAT(block.location()->nodeLabels(), ElementsAre(1, 2, 3, 4, 2, 3, 4, 5));
  EXPECT_THAT(block.location()->rowOf(), ElementsAre(0, 1, 2, 3, 1, 2, 3, 4));
  EXPECT_EQ(block.storedRows(), 5);
  EXPECT_THAT(rowsOf(block, 0), ElementsAre(11, 12, 13, 21, 22, 23, 31, 32, 33, 41, 42, 43, 21, 22, 23, 31, 32, 33, 41,
                                            42, 43, 51, 52, 53));
}

TEST_F(OnePassTest, RowsAtOtherPlacesThanTheOutlineLetExpectTakeASecondPass) {
  const odbstore::StoredField& field =
      import(outlineOf(kScalar, {2, 2, 2}),
             {{{0, 0, 0}, {1, 5}, {1, 5}}, {{0, 0, 1}, {2, 3}, {12, 13}}, {{0, 0, 2}, {1, 5}, {21, 25}}});
  EXPECT_EQ(passes_, 2);
  EXPECT_THAT(said_, ElementsAre("a warning of the source"));
  ASSERT_THAT(field.blocks, SizeIs(3)) << "one for each frame";
  EXPECT_THAT(field.blocks[1].location()->nodeLabels(), ElementsAre(2, 3));
  EXPECT_THAT(rowsOf(field.blocks[1], 1), ElementsAre(12, 13));
  EXPECT_THAT(rowsOf(field.blocks[2], 2), ElementsAre(21, 25));
  EXPECT_THAT(step_->historySamples("Node 5", "U1").numbers, ElementsAre(0, 1, 1, 2));
}

TEST_F(OnePassTest, RowsThatDoNotComeTakeASecondPass) {
  const odbstore::StoredField& field =
      import(outlineOf(kScalar, {2, 2}), {{{0, 0, 0}, {1, 5}, {1, 5}}, {{0, 0, 1}, {}, {}}});
  EXPECT_EQ(passes_, 2);
  EXPECT_THAT(field.blocks.at(0).frames(), ElementsAre(0));
  EXPECT_THAT(field.frames(), ElementsAre(0));
}

TEST_F(OnePassTest, NothingIsLeftOfAnImportThatFails) {
  TestSource source(outlineOf(kScalar, {2}), {{{0, 0, 0}, {1, 1}, {1, 5}}}, warn_);
  EXPECT_THROW(runImport(source, {"job", path_, {}, {}}, warn_), ImportError);
  EXPECT_EQ(directory_.entries(), 0U);
}

}  // namespace
}  // namespace importers
