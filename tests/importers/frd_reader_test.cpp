#include "importers/calculix/frd/frd_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "frd_text.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using namespace frd_text;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

class FrdReaderTest : public testing::Test {
 protected:
  // All blocks of a file with this text.
  std::vector<FrdBlock> read(const std::string& text) {
    FrdReader reader(writeText(directory_, "job.frd", text));
    std::vector<FrdBlock> blocks;
    while (std::optional<FrdBlock> block = reader.next()) blocks.push_back(std::move(*block));
    cutOff_ = reader.isCutOff();
    header_ = reader.header();
    return blocks;
  }

  FrdResult readResult(const std::string& text) { return std::get<FrdResult>(read(kHeading + text + kEnd).at(0)); }

  std::string failure(const std::string& text) {
    return failureOf([&] { read(text); });
  }

  // The same for a text that comes behind the heading, whose last line is 6.
  std::string failureBehindHeading(const std::string& text) { return failure(kHeading + text); }

  TemporaryDirectory directory_;
  bool cutOff_ = false;
  FrdHeader header_;
};

std::vector<int> counted(int first, int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), first);
  return numbers;
}

TEST_F(FrdReaderTest, HeadingNamesTitleAndProgram) {
  read(twoBars() + kEnd);
  EXPECT_EQ(header_.title, "a title of two words");
  EXPECT_EQ(header_.program, "CalculiX Version 2.20");
  EXPECT_FALSE(cutOff_);
}

TEST_F(FrdReaderTest, AHeadingWithoutTitleHasNone) {
  read("    1C\n    1UUSER      someone\n" + nodes({}) + kEnd);
  EXPECT_EQ(header_.title, "");
}

TEST_F(FrdReaderTest, NodesAndElementsComeAsTheyAre) {
  const std::vector<FrdBlock> blocks = read(twoBars() + kEnd);
  ASSERT_EQ(blocks.size(), 2U);
  const auto& nodes = std::get<FrdNodes>(blocks[0]);
  EXPECT_THAT(nodes.labels, ElementsAre(1, 2, 3));
  EXPECT_THAT(nodes.coordinates, ElementsAre(0, 0, 0, 1, 0, 0, 2.5, 0, -1));
  EXPECT_EQ(nodes.line, 7);
  const auto& elements = std::get<FrdElements>(blocks[1]);
  ASSERT_EQ(elements.groups.size(), 1U);
  EXPECT_THAT(elements.groups[0].labels, ElementsAre(10, 20));
  EXPECT_THAT(elements.groups[0].connectivity, ElementsAre(1, 2, 2, 3));
}

TEST_F(FrdReaderTest, ElementsOfAllCodesHaveTheirNodesInTheOrderOfTheDeck) {
  std::vector<Element> all;
  const std::vector<int> counts = {8, 6, 4, 20, 15, 10, 3, 6, 4, 8, 2, 3};
  for (int code = 1; code <= 12; ++code)
    all.push_back({code, code, counted(1, counts[static_cast<std::size_t>(code) - 1])});
  const auto elements = std::get<FrdElements>(read(kHeading + frd_text::elements(all) + kEnd).at(0));
  ASSERT_EQ(elements.groups.size(), 12U);
  for (const FrdElementGroup& group : elements.groups) {
    const int count = counts[static_cast<std::size_t>(group.code) - 1];
    EXPECT_EQ(group.nodesPerElement, count);
    std::vector<int> expected = counted(1, count);
    // The deck's thirteenth node of a brick stands seventeenth in the file, and so on.
    if (group.code == 4) expected = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 17, 18, 19, 20, 13, 14, 15, 16};
    if (group.code == 5) expected = {1, 2, 3, 4, 5, 6, 7, 8, 9, 13, 14, 15, 10, 11, 12};
    if (group.code == 12) expected = {1, 3, 2};
    EXPECT_EQ(group.connectivity, expected) << "code " << group.code;
  }
}

TEST_F(FrdReaderTest, NumbersNeedNoBlanksBetweenThem) {
  const FrdResult result = readResult(frame({}, 1) + components("DISP", kDisplacement) +
                                      " -1         1-1.93000E+01-2.48000E+01-0.00000E+00\n" + kEndOfBlock);
  EXPECT_THAT(result.values, ElementsAre(-19.3F, -24.8F, -0.0F));
  EXPECT_TRUE(std::signbit(result.values[2]));
}

TEST_F(FrdReaderTest, ResultsCarryTheirFrame) {
  const FrdResult result = readResult(frd_text::result({.step = 3,
                                                        .increment = 7,
                                                        .counter = 42,
                                                        .value = 12.5,
                                                        .kind = 2,
                                                        .more = "    1PHID                          5\n"},
                                                       "DISP", kDisplacement, {{9, {1, 2, 3}}, {4, {4, 5, 6}}}));
  EXPECT_EQ(result.name, "DISP");
  EXPECT_EQ(result.step, 3);
  EXPECT_EQ(result.increment, 7);
  EXPECT_EQ(result.frameCounter, 42);
  EXPECT_EQ(result.value, 12.5);
  EXPECT_EQ(result.kind, AnalysisKind::modal);
  EXPECT_EQ(result.nodalDiameter, 5);
  EXPECT_EQ(result.components.size(), 3U) << "what is computed from the others is not stored";
  EXPECT_THAT(result.labels, ElementsAre(9, 4));
  EXPECT_THAT(result.values, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(FrdReaderTest, NodalDiametersEndWithTheirFrame) {
  const std::string text = result({.more = "    1PHID                          5\n"}, "NDTEMP", kTemperature, {}) +
                           result({}, "NDTEMP", kTemperature, {}) +
                           result({.more = "    1PHID                         -1\n"}, "NDTEMP", kTemperature, {});
  const std::vector<FrdBlock> blocks = read(kHeading + text + kEnd);
  EXPECT_EQ(std::get<FrdResult>(blocks.at(0)).nodalDiameter, 5);
  EXPECT_FALSE(std::get<FrdResult>(blocks.at(1)).nodalDiameter);
  EXPECT_FALSE(std::get<FrdResult>(blocks.at(2)).nodalDiameter);
}

TEST_F(FrdReaderTest, RowsOfMoreThanSixNumbersGoOn) {
  std::vector<Component> many;
  std::vector<double> first;
  std::vector<double> second;
  for (int i = 1; i <= 14; ++i) {
    many.push_back({"SDV" + std::to_string(i), 1});
    first.push_back(i);
    second.push_back(-i);
  }
  const FrdResult result = readResult(frd_text::result({}, "SDV", many, {{1, first}, {2, second}}));
  ASSERT_EQ(result.values.size(), 28U);
  EXPECT_EQ(result.values[13], 14.0F);
  EXPECT_EQ(result.values[14], -1.0F);
  EXPECT_EQ(result.values[27], -14.0F);
}

TEST_F(FrdReaderTest, WhatIsNoUsualNumberIsReadToo) {
  const FrdResult result = readResult(frame({}, 3) + components("DISP", kDisplacement) +
                                      " -1         1         INF        -INF         NaN\n"
                                      " -1         2 1.2345E-124 5.71727-124 1.00000E+39\n"
                                      " -1         3           0          -1  1.5\n" +
                                      kEndOfBlock);
  EXPECT_EQ(result.values[0], HUGE_VALF);
  EXPECT_EQ(result.values[1], -HUGE_VALF);
  EXPECT_TRUE(std::isnan(result.values[2]));
  EXPECT_EQ(result.values[3], 0.0F);
  EXPECT_EQ(result.values[4], 0.0F);
  EXPECT_EQ(result.values[5], HUGE_VALF);
  EXPECT_EQ(result.values[7], -1.0F);
  EXPECT_EQ(result.values[8], 1.5F);
}

// The same numbers in two ways of printing them in turn, over more than is read from the file at once.
TEST_F(FrdReaderTest, UsualAndOtherRowsTakeTurns) {
  const int count = 30'000;
  std::string text = frame({}, static_cast<std::size_t>(count)) + components("DISP", kDisplacement);
  for (int i = 1; i <= count; ++i) {
    const bool isUsual = i % 7 < 4;
    text += fmt::format(" -1{:10}{:12.5E}{}{}\n", i, 0.25 * i, isUsual ? " 1.00000E+00" : "      1.0000", number(-i));
  }
  const FrdResult result = readResult(text + kEndOfBlock);
  ASSERT_EQ(result.rows, static_cast<std::size_t>(count));
  for (int i = 1; i <= count; ++i) {
    const auto row = static_cast<std::size_t>(i - 1);
    ASSERT_EQ(result.labels[row], i);
    ASSERT_EQ(result.values[3 * row], 0.25F * static_cast<float>(i));
    ASSERT_EQ(result.values[3 * row + 1], 1.0F);
    ASSERT_EQ(result.values[3 * row + 2], -static_cast<float>(i));
  }
}

// The line of a damaged row counts those before it that were read several at a time.
TEST_F(FrdReaderTest, ADamagedRowBehindManyIsNamedWithItsLine) {
  std::vector<Row> many;
  for (int i = 1; i <= 20'000; ++i) many.push_back({i, {1.0 * i}});
  const std::string head = frame({}, 20'001) + components("NDTEMP", kTemperature) + rows(many);
  EXPECT_THAT(failureBehindHeading(head + " -1     20001   what is it\n" + kEndOfBlock),
              HasSubstr(fmt::format("job.frd:{}: ", 6 + 4 + 20'000 + 1)));
}

TEST_F(FrdReaderTest, LabelsHaveUpToTenDigits) {
  EXPECT_THAT(readResult(result({}, "NDTEMP", kTemperature, {{2147483647, {1}}})).labels, ElementsAre(2147483647));
  EXPECT_THAT(failureBehindHeading(frame({}, 1) + components("NDTEMP", kTemperature) + " -12147483648 1.00000E+00\n"),
              EndsWith("job.frd:11: error: the node \"2147483648\" is not a whole number"));
}

TEST_F(FrdReaderTest, CarriageReturnsDoNotMatter) {
  std::string text = twoBars() + result({}, "NDTEMP", kTemperature, {{1, {20}}}) + kEnd;
  std::string windows;
  for (const char c : text) windows += c == '\n' ? "\r\n" : std::string(1, c);
  const std::vector<FrdBlock> blocks = read(windows);
  ASSERT_EQ(blocks.size(), 3U);
  EXPECT_THAT(std::get<FrdResult>(blocks[2]).values, ElementsAre(20.0F));
}

TEST_F(FrdReaderTest, CountsMayBeBlankAndHeadingsRepeated) {
  const std::string text =
      "    1C\n    1C\n    1UUSER\n"
      "    2C                                                                   1\n"
      " -1         1 0.00000E+00 0.00000E+00 1.00000E+00\n -1         2 1.00000E+00 0.00000E+00 1.00000E+00\n -3\n"
      "    3C                                                                   1\n"
      " -1         1   11    0WATER\n -2         1         2\n -3\n 9999\n";
  const std::vector<FrdBlock> blocks = read(text);
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_THAT(std::get<FrdElements>(blocks[1]).groups.at(0).connectivity, ElementsAre(1, 2));
}

TEST_F(FrdReaderTest, ABlockMayHaveNoRowsEvenIfSomeAreAnnounced) {
  for (const std::size_t announced : {0U, 84U}) {
    const FrdResult result = readResult(frame({}, announced) + components("MAFLOW", {{"MF", 1}}) + kEndOfBlock);
    EXPECT_THAT(result.labels, IsEmpty());
    EXPECT_THAT(result.values, IsEmpty());
  }
}

TEST_F(FrdReaderTest, AFileWithoutItsLastLineIsCutOff) {
  EXPECT_EQ(read(twoBars()).size(), 2U);
  EXPECT_TRUE(cutOff_);
  EXPECT_EQ(read(twoBars() + " 9999").size(), 2U);
  EXPECT_FALSE(cutOff_) << "the last line needs no end";
}

TEST_F(FrdReaderTest, ACutAnywhereGivesTheBlocksBeforeIt) {
  const std::string model = twoBars();
  const std::string first = result({}, "DISP", kDisplacement, {{1, {1, 2, 3}}, {2, {4, 5, 6}}});
  const std::string second = result({.counter = 2}, "STRESS", kStress, {{1, {1, 2, 3, 4, 5, 6}}});
  const std::string whole = model + first + second + kEnd;
  const std::size_t afterFirst = model.size() + first.size();
  const std::size_t afterSecond = afterFirst + second.size();
  for (std::size_t cut = model.size(); cut < afterSecond; ++cut) {
    const std::vector<FrdBlock> blocks = read(whole.substr(0, cut));
    ASSERT_TRUE(cutOff_) << "cut at " << cut;
    // The last line of a block needs no end to be known.
    const std::size_t complete = 2 + (cut + 1 >= afterFirst ? 1U : 0U) + (cut + 1 >= afterSecond ? 1U : 0U);
    ASSERT_EQ(blocks.size(), complete) << "cut at " << cut;
  }
}

TEST_F(FrdReaderTest, OtherFilesAreRefused) {
  EXPECT_THAT(failure(""), EndsWith("job.frd: error: the file is empty"));
  EXPECT_THAT(failure("hello\n"),
              EndsWith("job.frd:1: error: not a CalculiX result file (expected \"    1C\" on line 1)"));
  EXPECT_THAT(failure(std::string("\x89HDF\r\n\x1a\n\0\0\0\0", 12)),
              HasSubstr("job.frd:1: error: not a CalculiX result file (expected"));
  EXPECT_THAT(failureBehindHeading("*NODE\n"), EndsWith("job.frd:7: error: this is not the start of a result block"));
}

TEST_F(FrdReaderTest, UnknownFormatsAreRefused) {
  std::string unknown = frame({}, 1);
  unknown[unknown.size() - 2] = '7';
  EXPECT_THAT(failureBehindHeading(unknown + " -4\n"),
              EndsWith(":8: error: the format \"7\" of the block is not known"));
}

TEST_F(FrdReaderTest, UnwantedResultsArePassedOverAndCounted) {
  const std::vector<Row> few = {{1, {1, 2, 3}}, {2, {4, 5, 6}}};
  const std::string wanted = result({.counter = 2}, "NDTEMP", kTemperature, {{2, {30}}});
  const std::string rowsOfAnotherLength = " -1         1 1.00000E+00 1.00000E+00 1.00000E+00   \n -3\n";
  const std::vector<std::pair<std::string, std::size_t>> cases = {
      {result({}, "DISP", kDisplacement, few), 2},
      {frame({}, 1) + components("DISP", kDisplacement) + rowsOfAnotherLength, 1},
      {result({}, "SDV", std::vector<Component>(7, {"SDV", 1}), {{1, {1, 2, 3, 4, 5, 6, 7}}}), 1}};
  for (const auto& [passed, rows] : cases) {
    FrdReader reader(writeText(directory_, "job.frd", kHeading + passed + wanted + kEnd));
    const auto isWanted = [](const FrdResult& result) { return result.name == "NDTEMP"; };
    const auto first = std::get<FrdResult>(reader.next(isWanted).value());
    EXPECT_EQ(first.rows, rows);
    EXPECT_THAT(first.labels, IsEmpty());
    const auto second = std::get<FrdResult>(reader.next(isWanted).value());
    EXPECT_THAT(second.values, ElementsAre(30.0F));
    const auto linesBefore = std::count(passed.begin(), passed.end(), '\n');
    EXPECT_EQ(second.line, 6 + linesBefore + 2) << "lines that are passed over count";
  }
}

TEST_F(FrdReaderTest, DamagedNodesAreNamedWithTheirLine) {
  const std::string header = fmt::format("    2C{:18}{:12}{:37}1\n", "", 1, "");
  EXPECT_THAT(failureBehindHeading(header + " -1         x 0.00000E+00 0.00000E+00 0.00000E+00\n"),
              EndsWith("job.frd:8: error: the node \"         x\" is not a whole number"));
  EXPECT_THAT(failureBehindHeading(header + " -1         1 0.00000E+00 0.0?000E+00 0.00000E+00\n"),
              EndsWith("job.frd:8: error: the coordinate \" 0.0?000E+00\" is not a number"));
  EXPECT_THAT(failureBehindHeading(header + " -1         1 0.00000E+00 0.00000E+00\n"),
              EndsWith("job.frd:8: error: the coordinate \"\" is not a number"));
  EXPECT_THAT(failureBehindHeading(header + "  1  0 0 0\n"),
              EndsWith("job.frd:8: error: expected a node here (\" -1\")"));
  EXPECT_THAT(failureBehindHeading(header + kEndOfBlock),
              EndsWith("job.frd:7: error: 1 nodes are announced here, but there are 0"));
}

TEST_F(FrdReaderTest, DamagedElementsAreNamedWithTheirLine) {
  const std::string header = fmt::format("    3C{:18}{:12}{:37}1\n", "", 1, "");
  EXPECT_THAT(failureBehindHeading(header + " -1         1   13    0    1\n"),
              EndsWith("job.frd:8: error: the element type code 13 is not known"));
  EXPECT_THAT(failureBehindHeading(header + " -1         1    0    0    1\n"), HasSubstr("type code 0 is not known"));
  EXPECT_THAT(failureBehindHeading(header + " -1         1    1    0    1\n -2         1         2\n"),
              EndsWith("job.frd:9: error: the node \"\" is not a whole number"));
  EXPECT_THAT(failureBehindHeading(header + " -1         1    4    0    1\n -2         1         2         3         4"
                                            "         5         6         7         8         9        10\n -3\n"),
              EndsWith("job.frd:10: error: expected the nodes of an element here (\" -2\")"));
  EXPECT_THAT(failureBehindHeading(header + " -2         1         2\n"),
              HasSubstr("job.frd:8: error: expected an element"));
}

TEST_F(FrdReaderTest, DamagedFramesAreNamedWithTheirLine) {
  EXPECT_THAT(failureBehindHeading("    1PSTEP                         1           x           1\n"),
              EndsWith("job.frd:7: error: the increment \"           x\" is not a whole number"));
  std::string value = frame({}, 1);
  value.replace(value.find(" 1.00000E+00"), 12, " 1.0x000E+00");
  EXPECT_THAT(failureBehindHeading(value + " -4\n"),
              EndsWith("job.frd:8: error: the value \" 1.0x000E+00\" is not a number"));
  EXPECT_THAT(failureBehindHeading(frame({}, 1) + " -5  D1\n"),
              EndsWith("job.frd:9: error: expected a field name here (\" -4\")"));
  EXPECT_THAT(failureBehindHeading(frame({}, 1) + " -4  DISP        4    1\n -5  D1          1    2    1    0\n -1\n"),
              EndsWith("job.frd:11: error: expected a component here (\" -5\")"));
  EXPECT_THAT(failureBehindHeading(frame({}, 1) + components("DISP", {{"ALL", 2, true}})),
              EndsWith("job.frd:10: error: DISP has no components"));
  EXPECT_THAT(failureBehindHeading(frame({}, 1) + " -4  DISP        ?    1\n"),
              EndsWith("job.frd:9: error: the number of components \"    ?\" is not a whole number"));
}

TEST_F(FrdReaderTest, DamagedRowsAreNamedWithTheirLine) {
  const std::string header = frame({}, 1) + components("DISP", kDisplacement);
  EXPECT_THAT(failureBehindHeading(header + " -1         1 1.00000E+00 1.00000X+00 1.00000E+00\n"),
              EndsWith("job.frd:14: error: \" 1.00000X+00\" is not a number"));
  EXPECT_THAT(failureBehindHeading(header + " -1         1 1.00000E+00 1.00000E+00\n"),
              EndsWith("job.frd:14: error: \"\" is not a number"));
  EXPECT_THAT(failureBehindHeading(header + " -1         1 1.00000E+00 1.00000E+00 1.00000E+00 1.00000E+00\n"),
              EndsWith("job.frd:14: error: there are more numbers here than the field has components"));
  EXPECT_THAT(failureBehindHeading(header + " -2         1 1.00000E+00 1.00000E+00 1.00000E+00\n"),
              EndsWith("job.frd:14: error: expected a row of results here (\" -1\")"));
  EXPECT_THAT(failureBehindHeading(header + " -1        1a 1.00000E+00 1.00000E+00 1.00000E+00\n"),
              HasSubstr(":14: error: the node"));
  EXPECT_THAT(failureBehindHeading(header + " -1\n"), HasSubstr(":14: error: the node"));
  const std::string row = " -1         1 1.00000E+00 1.00000E+00 1.00000E+00\n";
  EXPECT_THAT(failureBehindHeading(header + row + row + kEndOfBlock),
              EndsWith("job.frd:8: error: 1 rows are announced here, but there are 2"));
}

TEST_F(FrdReaderTest, HeadersThatLieAboutCountsCostNoMemory) {
  EXPECT_THAT(failureBehindHeading(frame({}, 2147483647) + components("NDTEMP", kTemperature) + rows({{1, {20}}}) +
                                   kEndOfBlock),
              HasSubstr("2147483647 rows are announced here, but there are 1"));
  std::string negative = frame({}, 1);
  negative.replace(negative.rfind("           1  "), 12, "          -1");
  EXPECT_THAT(failureBehindHeading(negative + " -4\n"), EndsWith("job.frd:8: error: the count is negative"));
}

}  // namespace
}  // namespace importers::calculix
