#include <cmath>
#include <limits>
#include <numeric>

#include "reduce/reduce_field_output_values.h"
#include "support/selection_oracle.h"
#include "walk_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ValuesTest : public WalkTest {
 protected:
  void reduce(const std::vector<memory::Value>& values, const std::vector<std::string>& labels = {},
              const char* scope = "ELEMENT_SET", const char* region = "__TOP", const char* field = "F") {
    odb_Sequence<odb_String> sequence;
    for (const std::string& label : labels) sequence.append(odb_String(label));
    reduceFieldOutputValues(odb_SequenceFieldValue(values), out_, "Step-1", 2, scope, region, field, invariants_,
                            sequence, 0, "", false);
    labelsAfterwards_ = sequence;
  }
  std::vector<std::string> linesOf(const std::string& head) {
    std::vector<std::string> lines = takeLines();
    for (std::string& line : lines) {
      EXPECT_EQ(line.substr(0, head.size()), head);
      line = line.substr(head.size());
    }
    return lines;
  }

  odb_Sequence<odb_InvariantEnum> invariants_;
  odb_Sequence<odb_String> labelsAfterwards_;
};

std::vector<memory::Value> scalars(int n) {
  std::vector<memory::Value> values;
  for (int i = 0; i < n; ++i) values.push_back(scalarValue(static_cast<float>((i * 7) % n + 1)));
  return values;
}

TEST_F(ValuesTest, ARegionOfWarningsOrInformationWritesNothing) {
  reduce(scalars(3), {}, "ELEMENT_SET", "__aWarnb");
  reduce(scalars(3), {}, "ALL", "__Info");
  EXPECT_EQ(records(), "");
}

TEST_F(ValuesTest, ScalarsOverARegionWriteTheEngineeringMaximumBeforeTheMinimum) {
  switches().engineeringMax = switches().engineeringMin = true;
  reduce(scalars(10));
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"), ElementsAre("max\t10", "min\t1", "enggmax\t10", "enggmin\t1"));
}

TEST_F(ValuesTest, ScalarsOverTheWholeModelWriteTheEngineeringMinimumBeforeTheMaximum) {
  switches().engineeringMax = switches().engineeringMin = true;
  reduce(scalars(10), {}, "ALL", "");
  EXPECT_THAT(linesOf("Step_1__Frame_2__F__"), ElementsAre("max\t10", "min\t1", "enggmin\t1", "enggmax\t10"));
}

TEST_F(ValuesTest, TwentyFivePercentOfTenPassOverOne) {
  switches().engineeringMax = switches().engineeringMin = true;
  switches().percentage = 25;
  reduce(scalars(10));
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"), ElementsAre("max\t10", "min\t1", "enggmax\t9", "enggmin\t2"));
}

TEST_F(ValuesTest, NoValueOverARegionWritesNothing) {
  reduce({});
  EXPECT_EQ(records(), "");
}

TEST_F(ValuesTest, NoValueOverTheWholeModelWritesTheStartingExtremes) {
  reduce({}, {}, "ALL", "");
  EXPECT_THAT(linesOf("Step_1__Frame_2__F__"), ElementsAre("max\t-1.79769e+308", "min\t1.79769e+308"));
}

TEST_F(ValuesTest, NaNsAloneCountAsNoValueOverARegion) {
  reduce({scalarValue(std::nanf("")), scalarValue(std::nanf(""))});
  EXPECT_EQ(records(), "");
  reduce({scalarValue(std::nanf("")), scalarValue(1)});
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"), ElementsAre("max\t1", "min\t1"));
}

TEST_F(ValuesTest, VectorsWriteMagnitudeThenComponentsThenTheirEngineeringExtremes) {
  switches().fieldComponents = switches().engineeringMax = switches().engineeringMin = true;
  reduce({vectorValue(3, 4, 0, 5), vectorValue(0, 0, -1, 1)});
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"),
              ElementsAre("mag__max\t5", "mag__min\t1", "mag__enggmax\t5", "mag__enggmin\t1", "1__max\t3", "1__min\t0",
                          "2__max\t4", "2__min\t0", "3__max\t0", "3__min\t-1", "1__enggmax\t3", "2__enggmax\t4",
                          "3__enggmax\t0", "1__enggmin\t0", "2__enggmin\t0", "3__enggmin\t-1"));
}

TEST_F(ValuesTest, VectorsWithoutComponentsWriteTheMagnitudeAlone) {
  reduce({vectorValue(3, 4, 0, 5)});
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"), ElementsAre("mag__max\t5", "mag__min\t5"));
}

TEST_F(ValuesTest, ATensorWritesThePresentComponentsInTheirCanonicalOrder) {
  switches().fieldComponents = true;
  reduce({tensorValue(8, {1, 2, 3, 4}, 9), tensorValue(8, {-1, -2, -3, -4}, 8)}, {"S11", "S22", "S33", "S12"});
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"),
              ElementsAre("mises__max\t9", "mises__min\t8", "11__max\t1", "11__min\t-1", "22__max\t2", "22__min\t-2",
                          "33__max\t3", "33__min\t-3", "12__max\t4", "12__min\t-4"));
}

TEST_F(ValuesTest, LabelsAreCutInPlaceAndCopiesOfTheListAreNot) {
  odb_Sequence<odb_String> labels;
  labels.append("S11");
  const odb_Sequence<odb_String> copy = labels;
  reduceFieldOutputValues({}, out_, "S", 1, "NODE_SET", "__T", "F", {}, labels, 0, "", false);
  EXPECT_STREQ(labels.constGet(0).cStr(), "11");
  EXPECT_STREQ(copy.constGet(0).cStr(), "S11");
}

TEST_F(ValuesTest, TensorRecordsHaveTheEngineeringExtremesUnderTheirSwitches) {
  switches().engineeringMax = switches().engineeringMin = switches().fieldComponents = true;
  reduce({tensorValue(5, {1}, 9), tensorValue(5, {2}, 8)}, {"11"});
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"),
              ElementsAre("mises__max\t9", "mises__min\t8", "mises__enggmax\t9", "mises__enggmin\t8", "11__max\t2",
                          "11__min\t1", "11__enggmax\t2", "11__enggmin\t1"));
}

TEST_F(ValuesTest, TheTwoDimensionalSurfaceKindHasItsEngineeringMinimumUnderThePlainName) {
  switches().engineeringMin = true;
  switches().percentage = 50;
  const std::vector<float> mises = {4, 3, 2, 1};
  std::vector<memory::Value> values;
  for (const float m : mises) values.push_back(tensorValue(9, {0}, m));
  reduce(values);
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"), ElementsAre("mises__max\t4", "mises__min\t1", "mises__min\t2"));
  reduce(values, {}, "ALL", "");
  EXPECT_THAT(linesOf("Step_1__Frame_2__F__"), ElementsAre("mises__max\t4", "mises__min\t1", "mises__enggmin\t2"));
  for (memory::Value& value : values) value.type = 8;
  reduce(values);
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"), ElementsAre("mises__max\t4", "mises__min\t1", "mises__enggmin\t2"));
}

TEST_F(ValuesTest, TheKindOfTheLastValueDecidesTheRecords) {
  reduce({tensorValue(5, {0}, 9), scalarValue(3)});
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"), ElementsAre("max\t9", "min\t3"));
  reduce({scalarValue(3), tensorValue(4, {0}, 9)});
  EXPECT_THAT(takeLines(), IsEmpty());
}

TEST_F(ValuesTest, ScalarsAmongVectorsTakeTheComponentsThatWereLeftInTheSlots) {
  switches().fieldComponents = true;
  componentSlots().vector = {100, -100, 0};
  reduce({scalarValue(1), vectorValue(3, 4, 0, 5)});
  const std::vector<std::string> lines = linesOf("Step_1__Frame_2__TOP__F__");
  EXPECT_THAT(lines, testing::Contains("1__max\t100"));
  EXPECT_THAT(lines, testing::Contains("2__min\t-100"));
}

TEST_F(ValuesTest, ScalarsAmongTensorsCountAsZeroAmongTheEngineeringValuesOfComponents) {
  switches().fieldComponents = switches().engineeringMin = true;
  reduce({scalarValue(3), tensorValue(5, {5}, 9)}, {"11"});
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"), ElementsAre("mises__max\t9", "mises__min\t3", "mises__enggmin\t3",
                                                                "11__max\t5", "11__min\t5", "11__enggmin\t0"));
}

TEST_F(ValuesTest, TensorComponentsSelectTheirMaximumFirstAllElseTheMinimum) {
  switches().fieldComponents = switches().engineeringMin = switches().engineeringMax = true;
  switches().percentage = 50;
  // Long enough for what the first selection moved to show in the result of the second.
  constexpr int kCount = 211;
  constexpr int kPassed = 105;
  constexpr std::size_t kRead = kPassed - 1;
  const std::vector<double> numbers = scrambledNumbers<double>(kCount, 71);
  const std::vector<double> minFirst = selectedAscending(numbers, kPassed);
  const std::vector<double> maxFirst = selectedDescending(numbers, kPassed);
  const std::vector<double> maxSecond = selectedDescending(minFirst, kPassed);
  const std::vector<double> minSecond = selectedAscending(maxFirst, kPassed);
  ASSERT_NE(minFirst[kRead], minSecond[kRead]);
  ASSERT_NE(maxFirst[kRead], maxSecond[kRead]);

  std::vector<memory::Value> values;
  for (const double number : numbers) {
    values.push_back(tensorValue(5, {static_cast<float>(number)}, static_cast<float>(number)));
  }
  const auto record = [](const char* name, double value) {
    return std::string(name) + "\t" + std::to_string(static_cast<int>(value));
  };
  reduce(values, {"11"});
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__F__"),
              ElementsAre("mises__max\t211", "mises__min\t1", record("mises__enggmax", maxSecond[kRead]),
                          record("mises__enggmin", minFirst[kRead]), "11__max\t211", "11__min\t1",
                          record("11__enggmax", maxFirst[kRead]), record("11__enggmin", minSecond[kRead])));
}

TEST_F(ValuesTest, TheSharedMaximumAndMinimumOfBlocksAreSetToZeroAndAllElseIsLeft) {
  reductionResults().block = {1, 2, 3, 4};
  reductionResults().tensor[0] = {5, 6, 7, 8};
  reduce(scalars(3));
  EXPECT_EQ(reductionResults().block.max, 0.0);
  EXPECT_EQ(reductionResults().block.min, 0.0);
  EXPECT_EQ(reductionResults().block.engineeringMax, 3.0);
  EXPECT_EQ(reductionResults().tensor[0].max, 5.0);
}

TEST_F(ValuesTest, NamesAreCleanedAndTheRegionFollowsTheFrameDirectly) {
  reduce(scalars(1), {}, "NODE_SET", "__PART-1 A_Set-1", "NT 1-x");
  EXPECT_EQ(takeLines().front(), "Step_1__Frame_2__PART_1_A_Set_1__NT_1_x__max\t1");
}

memory::Value stress(float tresca, float press) {
  memory::Value value = tensorValue(5, {0}, 1);
  value.tresca = tresca;
  value.press = press;
  return value;
}

TEST_F(ValuesTest, InvariantsOfStressFollowInTheOrderOfTheirSlots) {
  switches().tensorInvariants = switches().engineeringMax = switches().engineeringMin = true;
  invariants_.append(odb_Enum::press);
  invariants_.append(odb_Enum::tresca);
  reduce({stress(1, -1), stress(2, -2)}, {}, "ELEMENT_SET", "__TOP", "S");
  EXPECT_THAT(linesOf("Step_1__Frame_2__TOP__S__"),
              ElementsAre("mises__max\t1", "mises__min\t1", "mises__enggmax\t1", "mises__enggmin\t1", "tresca__max\t2",
                          "tresca__min\t1", "tresca__enggmax\t2", "tresca__enggmin\t1", "press__max\t-1",
                          "press__min\t-2", "press__enggmax\t-1", "press__enggmin\t-2"));
}

TEST_F(ValuesTest, InvariantsBelongToTheFieldNamedSAlone) {
  switches().tensorInvariants = true;
  invariants_.append(odb_Enum::tresca);
  reduce({stress(1, 0)}, {}, "ELEMENT_SET", "__TOP", "SS");
  EXPECT_EQ(takeLines().size(), 2U);
  reduce({stress(1, 0)}, {}, "ELEMENT_SET", "__TOP", "S");
  EXPECT_EQ(takeLines().size(), 4U);
  switches().tensorInvariants = false;
  reduce({stress(1, 0)}, {}, "ELEMENT_SET", "__TOP", "S");
  EXPECT_EQ(takeLines().size(), 2U);
}

TEST_F(ValuesTest, InvariantsThatNoValueHasAreNotWritten) {
  switches().tensorInvariants = switches().engineeringMax = switches().engineeringMin = true;
  invariants_.append(odb_Enum::tresca);
  reduce({stress(std::nanf(""), 0)}, {}, "ELEMENT_SET", "__TOP", "S");
  EXPECT_EQ(takeLines().size(), 4U);
  reduce({}, {}, "ELEMENT_SET", "__TOP", "S");
  EXPECT_THAT(takeLines(), IsEmpty());
}

TEST_F(ValuesTest, APrecisionErrorPassesThroughAndLeavesEarlierRecords) {
  reduce(scalars(1));
  memory::Value value = tensorValue(6, {}, 1);
  value.precision = odb_Enum::doublePrecision;
  value.doubles = {1, 2, 3, 4};
  EXPECT_THROW(reduce({value}, {"11"}), odb_Exception);
  EXPECT_EQ(takeLines().size(), 2U);
}

}  // namespace
