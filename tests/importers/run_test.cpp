// What all imports have in common: names, choices, merged rows, rows spread over elements.
#include <gmock/gmock.h>

#include "importers/run/choice.h"
#include "importers/run/element_groups.h"
#include "importers/run/merged_rows.h"
#include "importers/run/record_names.h"

namespace importers {
namespace {

using odbstore::Position;
using odbstore::SetKind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RecordNames : public testing::Test {
 protected:
  // The names that fields get.
  std::vector<std::string> named(const std::vector<std::string>& fields, const std::vector<std::string>& sets = {}) {
    Outline outline;
    OutlineStep& step = outline.steps.emplace_back();
    for (const std::string& field : fields) step.fields.push_back({field, "", {}, false, {}});
    for (const std::string& set : sets) outline.sets.push_back({SetKind::element, set, false, 0, ""});
    notes_.clear();
    keepNamesApart(outline, "job.frd", warn_);
    std::vector<std::string> names;
    for (const OutlineField& field : outline.steps[0].fields) names.push_back(field.name);
    return names;
  }

  std::vector<std::string> notes_;
  WarningSink warn_ = [this](const base::Diagnostic& said) { notes_.push_back(base::textOf(said)); };
};

TEST_F(RecordNames, NamesThatAreCleanedToTheSameGetNumbers) {
  EXPECT_THAT(named({"A B", "A-B", "A_B"}), ElementsAre("A B", "A-B_2", "A_B_3"));
  EXPECT_THAT(notes_, ElementsAre(HasSubstr("job.frd: note: the field A-B is called A-B_2"), HasSubstr("A_B_3")));
}

TEST_F(RecordNames, ControlCharactersBecomeBlanksAndFieldsStayApart) {
  EXPECT_THAT(named({"A\nB",
                     "A\x1b"
                     "B",
                     "C"}),
              ElementsAre("A B", "A B_2", "C"));
  EXPECT_THAT(notes_,
              ElementsAre(HasSubstr("warning: the name \"A\\x0aB\" has control characters"), HasSubstr("A\\x1bB")));
}

TEST_F(RecordNames, ANameThatIsFreeStays) {
  EXPECT_THAT(named({"S", "S_IM", "S__X", "U__mag"}, {"TOP"}), ElementsAre("S", "S_IM", "S__X", "U__mag"));
  EXPECT_THAT(notes_, IsEmpty());
}

TEST_F(RecordNames, AFieldIsNotCalledLikeAQuantityOfAnother) {
  EXPECT_THAT(named({"U", "U__mag"}), ElementsAre("U", "U__mag_2"));
}

TEST_F(RecordNames, AFieldIsNotCalledLikeAnotherOneOverASet) {
  // Over the whole model TOP__S writes Frame_1__TOP__S, which is S over TOP.
  EXPECT_THAT(named({"S", "TOP__S"}, {"TOP"}), ElementsAre("S", "TOP__S_2"));
  // _S over A is S over A_.
  EXPECT_THAT(named({"S", "_S"}, {"A", "A_"}), ElementsAre("S", "_S_2"));
  EXPECT_THAT(named({"S", "X__S"}, {"A", "A__X"}), ElementsAre("S", "X__S_2"));
}

TEST_F(RecordNames, FramesOfEqualNumbersAreNumberedAnew) {
  Outline outline;
  OutlineStep step;
  step.name = "Step-1";
  step.frames = {{3, 0.1, "a"}, {3, 0.2, "b"}};
  outline.steps = {step};
  keepNamesApart(outline, "job.frd", warn_);
  EXPECT_EQ(outline.steps[0].frames[0].incrementNumber, 1);
  EXPECT_EQ(outline.steps[0].frames[1].incrementNumber, 2);
  EXPECT_THAT(notes_, ElementsAre("job.frd: note: frames of Step-1 have equal numbers; they are numbered from 1"));
}

TEST(MergedRows, ARowThatTwoSetsShareIsThereOnce) {
  MergedRows rows;
  rows.add(Position::integrationPoint, odbstore::LocationLabels{{}, {7, 7, 8}, {1, 2, 1}},
           std::vector<double>{1, 2, 3, 4, 5, 6});
  rows.add(Position::integrationPoint, odbstore::LocationLabels{{}, {8, 9, 7}, {1, 1, 3}},
           std::vector<double>{50, 60, 7, 8, 9, 10});
  EXPECT_THAT(rows.labels().elements, ElementsAre(7, 7, 8, 9, 7));
  EXPECT_THAT(rows.labels().integrationPoints, ElementsAre(1, 2, 1, 1, 3));
  EXPECT_THAT(rows.values(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
}

TEST(SpreadRows, ElementsWithoutTensorsGetNone) {
  ElementGroups groups;
  groups.groupOf("C3D4", 4, true, {}) = {"C3D4", 4, true, {10}, {1, 2, 3, 4}};
  groups.groupOf("SPRINGA", 2, false, {}) = {"SPRINGA", 2, false, {20}, {4, 9}};
  const SpreadRows spread = spreadOverElements(groups.all(), std::vector<int>{9, 4, 3});
  EXPECT_THAT(spread.elements, ElementsAre(10, 10));
  EXPECT_THAT(spread.nodes, ElementsAre(3, 4));
  EXPECT_THAT(spread.rowOf, ElementsAre(2, 1));
  EXPECT_EQ(spread.looseRows, 1U);
  EXPECT_EQ(spread.type, "C3D4");
}

TEST(Choice, FramesThatAreNotThereChooseNothing) {
  Outline outline;
  OutlineStep step;
  step.number = 1;
  step.name = "Step-1";
  step.frames = {{1, 1.0, ""}};
  step.fields.push_back({"U", "DISP", {}, false, {{0, 4, 1}}});
  step.tables.push_back({"total force", "TOP", 1, 1});
  outline.steps = {step};
  try {
    choose(outline, {{}, {}, *frameChoiceFrom("99")}, "job.frd");
    FAIL() << "an empty database would replace a good one";
  } catch (const ImportError& error) {
    EXPECT_STREQ(error.what(),
                 "job.frd: error: nothing is selected; the file holds step 1 (frames 1) with the fields U");
  }
  EXPECT_TRUE(choose(outline, {{}, {}, *frameChoiceFrom("last")}, "job.frd").takes({0, 0, 0}));
}

}  // namespace
}  // namespace importers
