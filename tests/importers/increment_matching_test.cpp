// Printed times and the increments that they are matched with.
#include "importers/calculix/dat/increment_matching.h"

#include <gmock/gmock.h>

#include <deque>

namespace importers::calculix {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;

PrintedTime printed(double time) { return {rounded(time, kDigitsOfTables), {}}; }

std::vector<PrintedTime> printed(const std::vector<double>& times) {
  std::vector<PrintedTime> found;
  for (const double time : times) found.push_back(printed(time));
  return found;
}

// Steps as a test describes them, one after the other.
class KnownRun {
 public:
  // A step whose increments the status file has, all of them, with six digits of their total times.
  KnownRun& status(const std::vector<double>& totals) {
    RunStep& step = next();
    step.knowsAll = true;
    step.mayGoOn = false;
    for (const double total : totals) addTo(step, rounded(total, kDigitsOfStatus));
    return *this;
  }

  // The same with a start and times in the step, which the deck and the status file know exactly.
  KnownRun& status(double start, const std::vector<double>& inStep, int frequency) {
    deck_.emplace_back().frequency = frequency;
    RunStep& step = next();
    step.deck = &deck_.back();
    step.knowsAll = true;
    step.mayGoOn = false;
    for (const double time : inStep) addTo(step, {start + time, start + time});
    for (std::size_t i = 0; i + 1 < step.increments.size(); ++i) {
      step.increments[i].isExpected = (i + 1) % static_cast<std::size_t>(frequency) == 0;
    }
    return *this;
  }

  // A step that is known by its frames and its end.
  KnownRun& frames(const std::vector<std::pair<int, double>>& frames, double start, double end) {
    RunStep& step = next();
    step.hasFrames = !frames.empty();
    step.mayGoOn = false;
    step.start = start;
    step.end = end;
    for (const auto& [number, total] : frames) {
      addTo(step, rounded(total, digitsOfResults(total)));
      step.increments.back().number = number;
      step.increments.back().frame = 0;
    }
    if (frames.empty() || frames.back().second != end) {
      addTo(step, {end, end});
      step.increments.back().number.reset();
    }
    return *this;
  }

  // A step of which nothing is known.
  KnownRun& unknown() {
    next();
    return *this;
  }

  // "step/increment" for each time, "step/-" between known ones, "?" behind what is not certain.
  std::vector<std::string> match(const std::vector<PrintedTime>& times, bool mayGoOn = false) const {
    std::vector<StepInTime> list;
    for (std::size_t i = 0; i < steps_.size(); ++i) list.push_back({static_cast<int>(i) + 1, &steps_[i]});
    const auto found = matchTimes(times, list, mayGoOn);
    if (!found) return {"no match"};
    std::vector<std::string> texts;
    for (const TimeMatch& at : *found) {
      std::string text = std::to_string(at.step) + "/";
      const bool isNumbered =
          at.increment && steps_[static_cast<std::size_t>(at.step) - 1].increments[*at.increment].number;
      text += isNumbered
                  ? std::to_string(*steps_[static_cast<std::size_t>(at.step) - 1].increments[*at.increment].number)
              : at.increment ? "end"
                             : "-";
      texts.push_back(text + (at.isCertain ? "" : "?"));
    }
    return texts;
  }
  std::vector<std::string> match(const std::vector<double>& times, bool mayGoOn = false) const {
    return match(printed(times), mayGoOn);
  }

 private:
  RunStep& next() { return steps_.emplace_back(); }

  static void addTo(RunStep& step, const Rounded& total) {
    KnownIncrement known;
    known.number = static_cast<int>(step.increments.size()) + 1;
    known.total = total;
    step.increments.push_back(known);
  }

  std::deque<RunStep> steps_;
  std::deque<DeckStep> deck_;
};

TEST(IncrementMatchingTest, TimesThatDifferNeedNothingElse) {
  EXPECT_THAT(KnownRun().status({0.5, 1}).status({1.5, 2}).match({0.5, 1, 1.5, 2}),
              ElementsAre("1/1", "1/2", "2/1", "2/2"));
  EXPECT_THAT(KnownRun().status({0.25, 0.5, 0.75, 1}).match({0.5, 1}), ElementsAre("1/2", "1/4"));
}

TEST(IncrementMatchingTest, TheDeckKnowsWhichIncrementsAreWritten) {
  // Six digits of the total time are the same for all.
  const std::vector<double> inStep = {1e-6, 2e-6, 3e-6, 4e-6, 5e-6, 6e-6, 7e-6};
  const KnownRun run = KnownRun().status(1000, inStep, 3);
  EXPECT_THAT(run.match({1000, 1000, 1000}), ElementsAre("1/3", "1/6", "1/7"));
}

TEST(IncrementMatchingTest, WithoutADeckEveryNthIncrementExplainsTheTimes) {
  const std::vector<double> alike(10, 1.0);
  EXPECT_THAT(KnownRun().status({1}).status(alike).match({1, 1, 1}), Each(EndsWith("?"))) << "fives, sixes, to tens";
  EXPECT_THAT(KnownRun().status({1}).status(alike).match({1, 1, 1, 1, 1}),
              ElementsAre("1/1", "2/3", "2/6", "2/9", "2/10"));
}

TEST(IncrementMatchingTest, FramesOfTheResultFileAreWrittenWithTheTables) {
  const KnownRun run =
      KnownRun().frames({}, 0, 1e6).frames({{3, 1000000.06}, {6, 1000000.12}, {7, 1000000.2}}, 1e6, 1000000.2);
  EXPECT_THAT(run.match({5e5, 1e6, 1e6, 1e6, 1e6}), ElementsAre("1/-", "1/end", "2/3", "2/6", "2/7"));
}

TEST(IncrementMatchingTest, WithoutAStatusFileTheEndsOfStepsCount) {
  const KnownRun run = KnownRun().frames({}, 0, 1).frames({}, 1, 3);
  EXPECT_THAT(run.match({0.5, 1, 2, 3}), ElementsAre("1/-", "1/end", "2/-", "2/end"));
  EXPECT_THAT(run.match({1, 1.000001, 3}), ElementsAre("1/end", "2/-", "2/end"));
}

TEST(IncrementMatchingTest, WhatTheDigitsDoNotTellIsInDoubt) {
  EXPECT_THAT(KnownRun().frames({}, 0, 1000).frames({}, 1000, 1000.0001).match({1000, 1000, 1000}),
              ElementsAre(EndsWith("?"), EndsWith("?"), "2/end"));
  EXPECT_THAT(KnownRun().status(std::vector<double>(4, 1.0)).match({1, 1}), Contains(EndsWith("?")));
}

TEST(IncrementMatchingTest, TablesThatAStepDoesNotAskForAreOfAnother) {
  PrintedTime first = printed(1);
  PrintedTime second = printed(1);
  first.askedBy = {false, true};
  second.askedBy = {false, true};
  const KnownRun run = KnownRun().status(1, {0}, 1).status(1, {1e-9, 2e-9}, 1);
  EXPECT_THAT(run.match(std::vector{first, second}), ElementsAre("2/1", "2/2"));
}

TEST(IncrementMatchingTest, TimesOfAnotherRunDoNotFit) {
  const KnownRun run = KnownRun().status({1000}).status({1000.01, 1000.02});
  EXPECT_THAT(run.match({1, 1, 1.5, 2}), ElementsAre("no match"));
  EXPECT_THAT(run.match({1000, 1000.01, 1000.02, 1000.03}), ElementsAre("no match"));
  EXPECT_THAT(KnownRun().match(std::vector<double>{1}), ElementsAre("no match"));
}

TEST(IncrementMatchingTest, WithoutADeckFurtherStepsMayFollow) {
  EXPECT_THAT(KnownRun().match({1, 2, 1}, true), ElementsAre("1/-", "1/-", "2/-"));
  EXPECT_THAT(KnownRun().status({5}).match({5, 2}, true), ElementsAre("no match"));
  EXPECT_THAT(KnownRun().match({1, 2, 3}, true), ElementsAre("1/-", "1/-", "1/-"));
  EXPECT_THAT(KnownRun().status({1}).match({1, 2}, true), ElementsAre("1/1", "2/-"));
  EXPECT_THAT(KnownRun().unknown().match({1, 2}, true), ElementsAre("1/-", "1/-"));
}

TEST(IncrementMatchingTest, ManyTimesAreMatchedInTheirOrder) {
  std::vector<double> inStep;
  for (int i = 1; i <= 20000; ++i) inStep.push_back(i * 1e-12);
  const KnownRun run = KnownRun().status(1, inStep, 1);
  const std::vector<std::string> found = run.match(std::vector<double>(20000, 1.0));
  ASSERT_EQ(found.size(), 20000U);
  EXPECT_EQ(found.front(), "1/1");
  EXPECT_EQ(found.back(), "1/20000");
  EXPECT_EQ(run.match(std::vector<double>(19000, 1.0)).size(), 19000U) << "too many to weigh all of them";
}

}  // namespace
}  // namespace importers::calculix
