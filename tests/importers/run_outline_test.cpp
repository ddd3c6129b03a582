// outlineOf() by itself: what a run's files hold, made by hand, in; the outline and the plan of its blocks out.
#include "importers/calculix/run_outline.h"

#include <fmt/core.h>
#include <gmock/gmock.h>

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const MappedField kForce = vectorField("RF", "Total external force", {0, 1, 2});
const MappedField kMove = vectorField("U", "Displacement", {0, 1, 2});

class RunOutline : public testing::Test {
 protected:
  RunOutline() { contents_.nodes = {1, 2, 3, 4}; }

  // A block of the result file with the rows of all nodes, in the frame that the increment of the step has.
  void block(int step, int increment, const std::string& name, std::vector<MappedField> fields) {
    FrdResult head;
    head.ordinal = blocks_;
    head.step = step;
    head.increment = increment;
    head.value = step - 1 + 0.1 * increment;
    head.frameCounter = 100 * step + increment;
    const FrameNumber frame = contents_.frames.find(head, namesOfFields(fields));
    contents_.blocks.push_back({false, blocks_++, name, frame, step, std::move(fields), contents_.nodes.size()});
  }

  // A printed table that makes a field, in the frame of the block added last.
  void table(std::size_t ordinal, MappedField field, std::size_t rows) {
    const ContentsBlock last = contents_.blocks.back();
    contents_.blocks.push_back({true, ordinal, "displacements", last.frame, last.step, {std::move(field)}, rows});
  }

  // "step 1, 2 frames: U of DISP in 0 1; ..." of every step.
  std::vector<std::string> outline() {
    contents_.frames.settle({}, [](const base::Diagnostic&) {});
    outline_ = outlineOf(contents_, deck_, false, {}, plan_);
    std::vector<std::string> said;
    for (const OutlineStep& step : outline_.steps) {
      std::string text = fmt::format("step {}, {} frames:", step.number, step.frames.size());
      for (const OutlineField& field : step.fields) {
        text += fmt::format(" {} of {} in", field.name, field.source);
        for (const OutlineRows& rows : field.frames)
          text += fmt::format(" {}*{}/{}", rows.frame, rows.rows, rows.pieces);
        text += ";";
      }
      said.push_back(text);
    }
    return said;
  }

  // The names of the fields that a block of the result file goes to.
  std::vector<std::string> targets(const std::map<std::size_t, std::vector<Target>>& of, std::size_t ordinal) const {
    std::vector<std::string> names;
    for (const Target& target : of.at(ordinal)) {
      names.push_back(outline_.steps[target.rows.step].fields[target.rows.field].name);
    }
    return names;
  }

  Contents contents_;
  std::size_t blocks_ = 0;
  Deck deck_;
  Plan plan_;
  Outline outline_;
};

TEST_F(RunOutline, NothingHasNoSteps) {
  EXPECT_THAT(outline(), IsEmpty());
  EXPECT_EQ(outline_.nodes, 4U);
}

TEST_F(RunOutline, FieldsComeByNameAndThePlanFollows) {
  block(1, 1, "DISP", {kMove});
  block(1, 1, "FORC", {kForce});
  block(1, 2, "DISP", {kMove});
  EXPECT_THAT(outline(), ElementsAre("step 1, 2 frames: RF of FORC in 0*4/1; U of DISP in 0*4/1 1*4/1;"));
  EXPECT_THAT(targets(plan_.results, 0), ElementsAre("U"));
  EXPECT_THAT(targets(plan_.results, 1), ElementsAre("RF"));
  EXPECT_EQ(plan_.results.at(2)[0].rows, (RowsId{0, 1, 1}));
}

TEST_F(RunOutline, FieldsOfOneNameThatDifferGetNumbers) {
  block(1, 1, "A", {scalarField("X", "One thing", 0)});
  block(1, 2, "B", {scalarField("X", "Another", 0)});
  EXPECT_THAT(outline(), ElementsAre("step 1, 2 frames: X of A in 0*4/1; X_2 of B in 1*4/1;"));
}

TEST_F(RunOutline, StepsOfTheDeckWithoutResultsAreSteps) {
  block(2, 1, "DISP", {kMove});
  deck_.steps.steps.resize(3);
  EXPECT_THAT(outline(),
              ElementsAre("step 1, 0 frames:", "step 2, 1 frames: U of DISP in 0*4/1;", "step 3, 0 frames:"));
  contents_.isCutOff = true;
  EXPECT_THAT(outline(), ElementsAre("step 2, 1 frames: U of DISP in 0*4/1;")) << "the run may not have got to them";
}

TEST_F(RunOutline, TheDeckOfAnotherRunAddsNoSteps) {
  block(5, 1, "DISP", {kMove});
  deck_.steps.steps.resize(3);
  EXPECT_THAT(outline(), ElementsAre("step 5, 1 frames: U of DISP in 0*4/1;"));
}

TEST_F(RunOutline, TablesOfAFrameArePiecesOfItsField) {
  block(1, 1, "DISP", {kMove});
  const MappedField printed = vectorField("U_PRINT", "Displacement", {0, 1, 2});
  table(0, printed, 2);
  table(3, printed, 5);
  EXPECT_THAT(outline(), ElementsAre("step 1, 1 frames: U of DISP in 0*4/1; U_PRINT of displacements in 0*7/2;"));
  EXPECT_THAT(targets(plan_.tables, 3), ElementsAre("U_PRINT"));
}

TEST_F(RunOutline, NodesInLocalAxesHaveAFieldOfTheirOwn) {
  block(1, 1, "DISP", {kMove});
  block(1, 1, "FORC", {kForce});
  deck_.localAxes.fields = {{"U"}};
  deck_.localAxes.nodes = {2, 4};
  deck_.steps.steps.resize(1);
  EXPECT_THAT(outline(), ElementsAre("step 1, 1 frames: RF of FORC in 0*4/1; U of DISP in 0*4/1; "
                                     "U_LOCAL of DISP in 0*2/1;"));
  ASSERT_THAT(targets(plan_.results, 0), ElementsAre("U", "U_LOCAL"));
  EXPECT_EQ(plan_.results.at(0)[0].at, RowsAt::otherNodes);
  EXPECT_EQ(plan_.results.at(0)[1].at, RowsAt::nodesWithLocalAxes);
}

TEST_F(RunOutline, AComplexFieldHasItsLargestValuesBesideIt) {
  block(1, 1, "DISP", {kMove});
  block(1, 1, "DISPI", {vectorField("U_IM", "Displacement, imaginary part", {0, 1, 2})});
  EXPECT_THAT(outline(), ElementsAre("step 1, 1 frames: U of DISP in 0*4/1; U_IM of DISPI in 0*4/1; "
                                     "U_PEAK of DISP, DISPI in 0*4/1;"));
  ASSERT_EQ(plan_.peaks.size(), 1U);
  EXPECT_EQ(plan_.peaks[0].real, 0U);
  EXPECT_EQ(plan_.peaks[0].imaginary, 1U);
  EXPECT_EQ(plan_.peaks[0].rows, (RowsId{0, 2, 0}));
}

TEST_F(RunOutline, TablesOfAKindAreCountedWithTheirLargest) {
  block(1, 1, "DISP", {kMove});
  for (const std::size_t rows : {3U, 8U, 2U}) {
    PrintedTable& printed = contents_.printed.tables.emplace_back();
    printed.head = parseDatTitle(" forces (fx,fy,fz) for set EDGE and time  0.1000000E+01");
    printed.format = &datFormatOf(printed.head);
    printed.rows = rows;
    printed.step = 1;
  }
  outline();
  ASSERT_EQ(outline_.steps[0].tables.size(), 1U);
  const OutlineTable& kind = outline_.steps[0].tables[0];
  EXPECT_EQ(kind.source, "forces");
  EXPECT_EQ(kind.set, "EDGE");
  EXPECT_EQ(kind.rows, 8U);
  EXPECT_EQ(kind.tables, 3U);
}

}  // namespace
}  // namespace importers::calculix
