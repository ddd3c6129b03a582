// Frames of a run: heads of blocks and lines of the status file in, numbers, values and descriptions out.
#include "importers/calculix/steps/frames.h"

#include <fmt/core.h>
#include <gmock/gmock.h>

#include "importers/calculix/steps/rounded.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Block {
  int step = 1;
  int increment = 1;
  double value = 1;
  AnalysisKind kind = AnalysisKind::steady;
  int mode = 0;
  int diameter = -1;
  int counter = 0;  // 0: one more than the last one
};

class FramesTest : public testing::Test {
 protected:
  FrdResult resultOf(const Block& block) {
    FrdResult result;
    result.step = block.step;
    result.increment = block.increment;
    result.value = block.value;
    result.kind = block.kind;
    result.mode = block.mode;
    if (block.diameter >= 0) result.nodalDiameter = block.diameter;
    counter_ = result.frameCounter = block.counter > 0 ? block.counter : counter_ + 1;
    return result;
  }

  // "number value description" of the frames of a step.
  std::vector<std::string> frames(const std::vector<Block>& blocks, int step, const StepSpans& spans = {},
                                  const std::vector<RunFrame>& added = {}) {
    writeText(directory_, "job.sta", status_);
    Frames frames(readStepTimes(directory_.file("job.sta")));
    for (const Block& block : blocks) frames.find(resultOf(block), {"U"});
    frames.checkStatus();
    usesStatus_ = !frames.statusTimes().empty();
    for (const RunFrame& frame : added) frames.add(frame);
    frames.settle(spans, warn_);
    std::vector<std::string> found;
    for (const FrameNumber frame : frames.steps().at(step)) {
      const odbstore::FrameInfo& info = frames[frame].info;
      found.push_back(fmt::format("{} {} {}", info.incrementNumber, info.value, info.description));
    }
    return found;
  }

  static RunFrame printedAt(double time, std::optional<int> increment = {}) {
    RunFrame frame;
    frame.step = 1;
    frame.value = time;
    frame.increment = increment;
    frame.digits = kDigitsOfTables;
    return frame;
  }

  void status(int step, int increment, double total, double inStep) {
    status_ += fmt::format("{:6} {:10} {:5} {:5} {:14.5E} {:13.5E} 1.0\n", step, increment, 1, 2, total, inStep);
  }

  TemporaryDirectory directory_;
  std::string status_;
  bool usesStatus_ = false;
  std::vector<std::string> said_;
  int counter_ = 0;
  const WarningSink warn_ = [this](const base::Diagnostic& said) { said_.push_back(base::textOf(said)); };
};

TEST_F(FramesTest, TimesAreThoseOfTheStep) {
  // Total times of six digits, of which the difference would be 0.000999995 and 0.
  status(1, 1, 1.0, 1.0);
  status(2, 1, 1.001, 0.001);
  status(2, 2, 1.001, 0.001004);
  EXPECT_THAT(frames({{1, 1, 1.0}, {2, 1, 1.001}, {2, 2, 1.001004}}, 2, {{2, {1.000000005, {}}}}),
              ElementsAre("1 0.001 Increment 1: Step Time = 0.0010", "2 0.001004 Increment 2: Step Time = 0.0010"));
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(FramesTest, TotalTimesMayHaveMoreDigitsThanThoseOfTheStep) {
  status(1, 1, 1.23457, 1.23457);
  EXPECT_THAT(frames({{1, 1, 1.234567891}}, 1), ElementsAre("1 1.234567891 Increment 1: Step Time = 1.2346"));
}

TEST_F(FramesTest, TheDeckKnowsWhereAStepStarts) {
  EXPECT_THAT(frames({{2, 1, 1000.013}}, 2, {{2, {1000.003, {}}}}),
              ElementsAre("1 0.01 Increment 1: Step Time = 0.0100"));
  EXPECT_THAT(frames({{2, 1, 1000.013}}, 2), ElementsAre("1 1000.013 Increment 1: Step Time = 1000.0130"));
}

TEST_F(FramesTest, WithoutAStatusFileTheDeckKnowsWhereAStepEnds) {
  EXPECT_THAT(frames({{2, 3, 1000.003}, {2, 7, 1000.007}}, 2, {{2, {1000.0, 0.0070001}}}),
              ElementsAre("3 0.003 Increment 3: Step Time = 0.0030", HasSubstr("7 0.0070001")));
}

TEST_F(FramesTest, AStatusFileThatAgreesWithinItsDigitsIsNotBlamed) {
  status(1, 1, 1.0, 1.0);
  for (int i = 1; i <= 9; ++i) status(2, i, 1.00001, i * 1e-6);
  EXPECT_THAT(frames({{2, 5, 1.000005}, {2, 9, 1.000009}}, 2),
              ElementsAre("5 5e-06 Increment 5: Step Time = 5e-06", "9 9e-06 Increment 9: Step Time = 9e-06"));
  EXPECT_TRUE(usesStatus_);
}

TEST_F(FramesTest, AStatusFileThatContradictsTheResultsIsNotUsed) {
  status(1, 1, 5.0, 5.0);
  EXPECT_THAT(frames({{1, 1, 1.0}}, 1), ElementsAre("1 1 Increment 1: Step Time = 1.0000"));
  EXPECT_FALSE(usesStatus_);
}

TEST_F(FramesTest, ModesOfDiametersAreCountedOnAsTheSolverDoes) {
  const AnalysisKind modal = AnalysisKind::modal;
  EXPECT_THAT(
      frames({{1, 1, 10, modal, 1, 1, 101}, {1, 1, 30, modal, 3, 1, 103}, {1, 1, 20, modal, 1, 2, 104}}, 1),
      ElementsAre("1 10 Mode 1: Frequency = 10, Nodal Diameter = 1", "3 30 Mode 3: Frequency = 30, Nodal Diameter = 1",
                  "4 20 Mode 1: Frequency = 20, Nodal Diameter = 2"));
}

TEST_F(FramesTest, ComplexModesAreModes) {
  const AnalysisKind other = AnalysisKind::other;
  EXPECT_THAT(frames({{1, 1, 1.0}, {2, 0, 163287.3, other, 1}, {2, 0, 271233.0, other, 2}, {3, 1, 1.5}}, 2),
              ElementsAre("1 163287.3 Mode 1: Frequency = 1.6329e+05", "2 271233 Mode 2: Frequency = 2.7123e+05"));
  EXPECT_THAT(frames({{1, 1, 1.0}, {2, 0, 163287.3, other, 1}, {3, 1, 1.5}}, 3),
              ElementsAre("1 0.5 Increment 1: Step Time = 0.5000"))
      << "they take no time";
}

TEST_F(FramesTest, FramesOfTablesAreOrderedIntoTheirStep) {
  EXPECT_THAT(frames({{1, 4, 0.4}, {1, 8, 0.8}}, 1, {}, {printedAt(0.1, 1), printedAt(0.6), printedAt(1.0, 10)}),
              ElementsAre("1 0.1 Increment 1: Step Time = 0.1000", "4 0.4 Increment 4: Step Time = 0.4000",
                          "5 0.6 Increment 5: Step Time = 0.6000", "8 0.8 Increment 8: Step Time = 0.8000",
                          "10 1 Increment 10: Step Time = 1.0000"));
}

TEST_F(FramesTest, EqualNumbersOfAStepAreNumberedFromOne) {
  // A second procedure in a step counts its increments from 1 again.
  EXPECT_THAT(frames({{1, 1, 1.0}, {1, 2, 1.5}, {1, 1, 2.0}}, 1),
              ElementsAre("1 1 Increment 1: Step Time = 1.0000", "2 1.5 Increment 2: Step Time = 1.5000",
                          "3 2 Increment 3: Step Time = 2.0000"));
  EXPECT_THAT(said_, ElementsAre("note: step 1 has frames with equal numbers; they are numbered from 1"));
}

TEST_F(FramesTest, TimesWithinAPeriodCountFromItsStart) {
  Frames frames;
  FrdResult result = resultOf({2, 0, 4.2e-6, AnalysisKind::time});
  result.isPeriodic = true;
  const FrameNumber number = frames.find(result, {"U"});
  frames.settle({{2, {1.0, {}}}}, warn_);
  EXPECT_EQ(frames[number].info.value, 4.2e-6);
  EXPECT_EQ(frames[number].info.incrementNumber, 1);
}

TEST(RoundedTest, IsAllThatRoundsToANumber) {
  EXPECT_TRUE(rounded(1.00003, 6).contains(1.000034));
  EXPECT_FALSE(rounded(1.00003, 6).contains(1.000036));
  EXPECT_TRUE(rounded(0.1234608, 7).meets(rounded(0.123461, 6)));
  EXPECT_FALSE(rounded(0.1234608, 7).meets(rounded(0.123462, 6)));
  EXPECT_TRUE(rounded(1e6, 7).contains(1000000.4));
  EXPECT_FALSE(rounded(0.0, 7).contains(1e-12));
}

TEST(RoundedTest, DifferencesHaveNoMoreDigitsThanTheTotal) {
  EXPECT_EQ(difference(0.3, 0.1, 6), 0.2);
  EXPECT_EQ(difference(1000.013, 1000.003, 10), 0.01);
  EXPECT_EQ(difference(-0.5, -1.0, 6), 0.5);
  EXPECT_EQ(difference(0.0, -1.0, 6), 1.0);
  EXPECT_EQ(withDigits(0.000999995, 6), 0.000999995);
  EXPECT_EQ(withDigits(0.0009999996, 6), 0.001);
}

}  // namespace
}  // namespace importers::calculix
