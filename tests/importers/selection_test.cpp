#include <gmock/gmock.h>

#include "import_fixture.h"
#include "importers/run/choice.h"
#include "importers/run/outline_table.h"

namespace importers::calculix {
namespace {

using namespace frd_text;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

std::string stress(const Frame& at) { return result(at, "STRESS", kStress, {{1, {1, 2, 3, 4, 5, 6}}}); }

// Two steps; the second, of modes, has temperatures only and a block without rows before them.
std::string twoSteps() {
  std::string text = twoBars();
  for (int i = 1; i <= 3; ++i) {
    const Frame at = {.step = 1, .increment = 2 * i, .counter = i, .value = 0.5 * i};
    text += temperature(at, 100 + i) + stress(at);
  }
  for (int i = 1; i <= 3; ++i) {
    const Frame at = {.step = 2, .increment = 1, .counter = 3 + i, .value = 1000.0 * i, .kind = 2};
    text += result(at, "VELO", kDisplacement, {}) + temperature(at, 200 + i);
  }
  return text + kEnd;
}

class SelectionTest : public ImportTest {
 protected:
  ImportSummary importSelected(const Selection& selection, const std::string& results = twoSteps()) {
    request_.selection = selection;
    return import(results);
  }

  std::string refusal(const Selection& selection) {
    const std::string message = failureOf([&] { importSelected(selection); });
    EXPECT_FALSE(std::filesystem::exists(output_));
    return message;
  }

  std::string listed(const Selection& selection, const std::string& results = twoSteps()) {
    request_.selection = selection;
    run_.results = request_.results = writeText(directory_, "job.frd", results);
    const WarningSink warn = [this](const base::Diagnostic& said) { warnings_.push_back(base::textOf(said)); };
    const std::string table = outlineTable(listImport(*openCalculix(run_, warn), request_, warn), run_.results);
    EXPECT_FALSE(std::filesystem::exists(output_)) << "a list writes nothing";
    return table;
  }

  // The temperatures of a step, one per frame.
  std::vector<float> temperatures(const std::string& step) {
    const auto stored = odbstore::Reader(output_).step(step);
    std::vector<float> found;
    const odbstore::StoredBlock& block = fieldOf(*stored, "NT").blocks.at(0);
    for (std::size_t i = 0; i < stored->frames().size(); ++i) found.push_back(rowsOf(block, static_cast<int>(i))[0]);
    return found;
  }
};

TEST_F(SelectionTest, FieldsAreChosenInAnyCase) {
  const ImportSummary summary = importSelected({.fields = {"nt"}});
  EXPECT_EQ(summary.fields, 1);
  EXPECT_EQ(summary.frames, 6);
  EXPECT_THAT(temperatures("Step-1"), ElementsAre(101, 102, 103));
  EXPECT_THAT(temperatures("Step-2"), ElementsAre(201, 202, 203));
}

TEST_F(SelectionTest, AFieldMayBeAPartOfItsBlock) {
  const std::string contact =
      result({}, "CONTACT", {{"COPEN", 4}, {"CSLIP1", 4}, {"CSLIP2", 4}, {"CPRESS", 4}, {"CSHEAR1", 4}, {"CSHEAR2", 4}},
             {{1, {1, 2, 3, 4, 5, 6}}});
  EXPECT_EQ(importSelected({.fields = {"CSTR"}}, twoBars() + contact + kEnd).fields, 1);
  const auto step = odbstore::Reader(output_).step("Step-1");
  ASSERT_EQ(step->fields().size(), 1U);
  EXPECT_THAT(rowsOf(fieldOf(*step, "CSTR").blocks.at(0)), ElementsAre(4, 5, 6));
}

TEST_F(SelectionTest, FramesKeepTheNumbersAndValuesThatTheyHaveAmongAll) {
  importSelected({.frames = {FrameChoice::Kind::last}});
  EXPECT_THAT(increments("Step-1"), ElementsAre(6));
  EXPECT_THAT(frameValues("Step-1"), ElementsAre(1.5));
  EXPECT_THAT(descriptions("Step-2"), ElementsAre("Mode 3: Frequency = 3000"));
  EXPECT_THAT(temperatures("Step-2"), ElementsAre(203));

  importSelected({.frames = {FrameChoice::Kind::first}});
  EXPECT_THAT(temperatures("Step-1"), ElementsAre(101));
  EXPECT_THAT(temperatures("Step-2"), ElementsAre(201));

  importSelected({.frames = {FrameChoice::Kind::range, 2, 4}});
  EXPECT_THAT(increments("Step-1"), ElementsAre(2, 4));
  EXPECT_THAT(increments("Step-2"), ElementsAre(2, 3));
}

TEST_F(SelectionTest, StepsThatAreLeftOutStillTakeTime) {
  std::string text = twoBars();
  for (int step = 1; step <= 3; ++step) text += temperature({.step = step, .counter = step, .value = 1.0 * step});
  EXPECT_EQ(importSelected({.steps = {3}}, text + kEnd).steps, 1);
  EXPECT_THAT(frameValues("Step-3"), ElementsAre(1.0)) << "total time 3 less two steps of 1";
}

TEST_F(SelectionTest, WhatIsNotThereIsRefusedWithWhatThereIs) {
  const std::string all = "; the file holds step 1 (frames 2-6), step 2 (frames 1-3) with the fields NT, S";
  EXPECT_THAT(refusal({.fields = {"S", "U"}}), EndsWith("job.frd: error: there is no field U" + all));
  EXPECT_THAT(refusal({.fields = {"V"}}), HasSubstr("there is no field V")) << "its blocks have no rows";
  EXPECT_THAT(refusal({.steps = {1, 7}}), EndsWith("job.frd: error: there is no step 7" + all));
  EXPECT_THAT(refusal({.frames = {FrameChoice::Kind::range, 7, 9}}), EndsWith("error: nothing is selected" + all));
  EXPECT_THAT(refusal({.fields = {"S"}, .steps = {2}}), EndsWith("error: nothing is selected" + all));
}

TEST_F(SelectionTest, ASelectionOfAFileThatIsCutOffTakesWhatIsComplete) {
  const std::string whole = twoSteps();
  const ImportSummary summary =
      importSelected({.frames = {FrameChoice::Kind::last}}, whole.substr(0, whole.rfind(" -3")));
  EXPECT_EQ(summary.cutOffBehind, "step 2, frequency 2000");
  EXPECT_THAT(temperatures("Step-2"), ElementsAre(202));
}

TEST_F(SelectionTest, TheListIsWhatWouldBeImported) {
  EXPECT_THAT(listed({}), EndsWith("job.frd: 3 nodes, 2 elements, ASCII results\n"
                                   "\n"
                                   "step    frame  value  description\n"
                                   "Step-1  2      0.5    Increment 2: Step Time = 0.5000\n"
                                   "Step-1  4      1      Increment 4: Step Time = 1.0000\n"
                                   "Step-1  6      1.5    Increment 6: Step Time = 1.5000\n"
                                   "Step-2  1      1000   Mode 1: Frequency = 1000\n"
                                   "Step-2  2      2000   Mode 2: Frequency = 2000\n"
                                   "Step-2  3      3000   Mode 3: Frequency = 3000\n"
                                   "\n"
                                   "step    field  source  kind    components         rows  frames\n"
                                   "Step-1  NT     NDTEMP  scalar                     1     2,4,6\n"
                                   "Step-1  S      STRESS  tensor  11 22 33 12 13 23  1     2,4,6\n"
                                   "Step-2  NT     NDTEMP  scalar                     1     1-3\n"));
  EXPECT_THAT(warnings_, IsEmpty());
  EXPECT_THAT(listed({.fields = {"s"}, .frames = {FrameChoice::Kind::last}}),
              EndsWith("\n"
                       "step    frame  value  description\n"
                       "Step-1  6      1.5    Increment 6: Step Time = 1.5000\n"
                       "\n"
                       "step    field  source  kind    components         rows  frames\n"
                       "Step-1  S      STRESS  tensor  11 22 33 12 13 23  1     6\n"));
  EXPECT_THAT(listed({}, twoBars() + temperature({}).substr(0, 200)),
              EndsWith("job.frd: 3 nodes, 2 elements, ASCII results, cut off\n"));
}

}  // namespace
}  // namespace importers::calculix
