#include "importers/calculix/frd/frd_binary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "frd_bytes.h"
#include "importers/calculix/frd/frd_reader.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using frd_text::kDisplacement;
using frd_text::kEnd;
using frd_text::kHeading;
using frd_text::kStress;
using frd_text::kTemperature;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FrdBinaryTest : public testing::Test {
 protected:
  std::vector<FrdBlock> read(const std::string& text, const ResultFilter& isWanted = {}) {
    FrdReader reader(writeText(directory_, "job.frd", text));
    std::vector<FrdBlock> blocks;
    while (std::optional<FrdBlock> block = reader.next(isWanted)) blocks.push_back(std::move(*block));
    cutOff_ = reader.isCutOff();
    return blocks;
  }

  std::string failure(const std::string& text) {
    return failureOf([&] { read(text); });
  }

  TemporaryDirectory directory_;
  bool cutOff_ = false;
};

TEST_F(FrdBinaryTest, TheModelIsThatOfTheTextFile) {
  const std::vector<FrdBlock> blocks = read(frd_bytes::twoBars() + kEnd);
  ASSERT_EQ(blocks.size(), 2U);
  const auto& nodes = std::get<FrdNodes>(blocks[0]);
  EXPECT_THAT(nodes.labels, ElementsAre(1, 2, 3));
  EXPECT_THAT(nodes.coordinates, ElementsAre(0, 0, 0, 1, 0, 0, 2.5, 0, -1));
  const auto& elements = std::get<FrdElements>(blocks[1]);
  ASSERT_EQ(elements.groups.size(), 1U);
  EXPECT_THAT(elements.groups[0].labels, ElementsAre(10, 20));
  EXPECT_THAT(elements.groups[0].connectivity, ElementsAre(1, 2, 2, 3));
  EXPECT_FALSE(cutOff_);
}

TEST_F(FrdBinaryTest, BricksHaveTheirNodesInTheOrderOfTheDeck) {
  std::vector<int> nodes(20);
  std::iota(nodes.begin(), nodes.end(), 1);
  const auto elements = std::get<FrdElements>(read(kHeading + frd_bytes::elements({{7, 4, nodes}}) + kEnd).at(0));
  EXPECT_THAT(elements.groups.at(0).connectivity,
              ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 17, 18, 19, 20, 13, 14, 15, 16));
}

TEST_F(FrdBinaryTest, LayersOfAShellAreMoreElementsThanAnnounced) {
  std::string text = kHeading + frd_bytes::elements({{1, 11, {1, 2}}, {2, 11, {2, 3}}, {3, 11, {3, 4}}});
  text.replace(text.rfind("           3"), 12, "           1");
  const std::vector<FrdBlock> blocks = read(text + kEnd);
  EXPECT_THAT(std::get<FrdElements>(blocks.at(0)).groups.at(0).labels, ElementsAre(1, 2, 3));
  EXPECT_FALSE(cutOff_);
}

TEST_F(FrdBinaryTest, FloatsComeAsTheyAre) {
  const std::string text =
      kHeading + frd_bytes::result<float>({.step = 2}, "DISP", kDisplacement,
                                          {{9, {1.0F / 3, -0.0, INFINITY}}, {2147483647, {1e-45, 3e38, NAN}}});
  const auto result = std::get<FrdResult>(read(text + kEnd).at(0));
  EXPECT_EQ(result.step, 2);
  EXPECT_EQ(result.format, RowFormat::floats);
  EXPECT_THAT(result.labels, ElementsAre(9, 2147483647));
  ASSERT_EQ(result.values.size(), 6U);
  EXPECT_EQ(result.values[0], 1.0F / 3);
  EXPECT_TRUE(std::signbit(result.values[1]));
  EXPECT_EQ(result.values[2], INFINITY);
  EXPECT_EQ(result.values[3], 1e-45F);
  EXPECT_EQ(result.values[4], 3e38F);
  EXPECT_TRUE(std::isnan(result.values[5]));
}

TEST_F(FrdBinaryTest, DoublesAreRoundedToFloats) {
  const std::string text =
      kHeading + frd_bytes::result<double>({}, "STRESS", kStress, {{1, {1.0 / 3, -1e300, 1e-300, 4, 5, 6}}});
  const auto result = std::get<FrdResult>(read(text + kEnd).at(0));
  EXPECT_EQ(result.format, RowFormat::doubles);
  EXPECT_THAT(result.values, ElementsAre(1.0F / 3, -INFINITY, 0.0F, 4.0F, 5.0F, 6.0F));
}

TEST_F(FrdBinaryTest, RowsOfMoreThanOnePieceAreAllRead) {
  std::vector<frd_text::Row> rows;
  for (int i = 0; i < 60000; ++i) rows.push_back({i + 1, {0.5 * i, -1.0 * i, 1}});
  const auto result =
      std::get<FrdResult>(read(kHeading + frd_bytes::result<float>({}, "DISP", kDisplacement, rows) + kEnd).at(0));
  ASSERT_EQ(result.rows, rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ASSERT_EQ(result.labels[i], rows[i].label);
    ASSERT_EQ(result.values[3 * i], 0.5F * static_cast<float>(i));
    ASSERT_EQ(result.values[3 * i + 1], -static_cast<float>(i));
  }
  EXPECT_FALSE(cutOff_);
}

TEST_F(FrdBinaryTest, BytesThatLookLikeLinesAreNumbers) {
  // 10 is the end of a line, 0x20202020 are four blanks.
  const std::string text =
      kHeading +
      frd_bytes::result<float>({}, "NDTEMP", kTemperature, {{10, {1}}, {0x0A0A0A0A, {2}}, {0x20202020, {3}}}) + kEnd;
  EXPECT_THAT(std::get<FrdResult>(read(text).at(0)).labels, ElementsAre(10, 0x0A0A0A0A, 0x20202020));
}

TEST_F(FrdBinaryTest, TextAndBinaryBlocksMayFollowEachOther) {
  const std::string text = frd_bytes::twoBars() + frd_text::result({}, "NDTEMP", kTemperature, {{1, {20}}}) +
                           frd_bytes::result<double>({.counter = 2}, "NDTEMP", kTemperature, {{2, {30}}}) +
                           frd_text::result({.counter = 3}, "NDTEMP", kTemperature, {{3, {40}}}) + kEnd;
  const std::vector<FrdBlock> blocks = read(text);
  ASSERT_EQ(blocks.size(), 5U);
  EXPECT_THAT(std::get<FrdResult>(blocks[2]).values, ElementsAre(20.0F));
  EXPECT_THAT(std::get<FrdResult>(blocks[3]).values, ElementsAre(30.0F));
  EXPECT_THAT(std::get<FrdResult>(blocks[4]).values, ElementsAre(40.0F));
}

TEST_F(FrdBinaryTest, ABlockMayHaveNoRowsEvenIfSomeAreAnnounced) {
  const std::string none = frd_bytes::inFormat('2', frd_text::frame({}, 84)) + frd_text::components("V", kTemperature);
  const std::vector<FrdBlock> blocks =
      read(kHeading + none + frd_bytes::result<float>({}, "NDTEMP", kTemperature, {{1, {2}}}) + kEnd);
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_THAT(std::get<FrdResult>(blocks[0]).labels, IsEmpty());
  EXPECT_THAT(std::get<FrdResult>(blocks[1]).labels, ElementsAre(1));
}

TEST_F(FrdBinaryTest, UnwantedResultsArePassedOver) {
  const std::vector<frd_text::Row> rows(30000, frd_text::Row{1, {1, 2, 3, 4, 5, 6}});
  const std::string text = frd_bytes::twoBars() + frd_bytes::result<float>({}, "STRESS", kStress, rows) +
                           frd_text::result({}, "TOSTRAIN", kStress, rows) +
                           frd_bytes::result<double>({}, "NDTEMP", kTemperature, {{2, {30}}}) + kEnd;
  const std::vector<FrdBlock> blocks = read(text, [](const FrdResult& result) { return result.name == "NDTEMP"; });
  ASSERT_EQ(blocks.size(), 5U);
  for (const std::size_t i : {2U, 3U}) {
    EXPECT_EQ(std::get<FrdResult>(blocks[i]).rows, rows.size());
    EXPECT_THAT(std::get<FrdResult>(blocks[i]).values, IsEmpty());
  }
  EXPECT_THAT(std::get<FrdResult>(blocks[4]).values, ElementsAre(30.0F));
}

TEST_F(FrdBinaryTest, ACutAnywhereGivesTheBlocksBeforeIt) {
  const std::string nodes = frd_bytes::nodes({{1, {0, 0, 0}}, {2, {1, 0, 0}}});
  const std::string elements = frd_bytes::elements({{10, 11, {1, 2}}});
  const std::string first = frd_bytes::result<float>({}, "DISP", kDisplacement, {{1, {1, 2, 3}}, {2, {4, 5, 6}}});
  const std::string second = frd_bytes::result<double>({.counter = 2}, "STRESS", kStress, {{1, {1, 2, 3, 4, 5, 6}}});
  std::string whole = kHeading;
  std::vector<std::size_t> ends;
  for (const std::string& block : {nodes, elements, first, second}) ends.push_back((whole += block).size());
  whole += kEnd;
  for (const bool isRead : {true, false}) {
    for (std::size_t cut = kHeading.size(); cut < whole.size() - kEnd.size(); ++cut) {
      const auto blocks = read(whole.substr(0, cut), [&](const FrdResult&) { return isRead; });
      ASSERT_TRUE(cutOff_) << "cut at " << cut;
      const auto complete = std::count_if(ends.begin(), ends.end(), [&](std::size_t end) { return end <= cut; });
      ASSERT_EQ(blocks.size(), static_cast<std::size_t>(complete)) << "cut at " << cut;
    }
  }
}

TEST_F(FrdBinaryTest, CountsBeyondTheFileAreACut) {
  const std::string element = frd_bytes::elements({{1, 11, {1, 2}}}).substr(frd_bytes::elementsHeader(1).size());
  for (const std::string& block :
       {frd_bytes::nodesHeader(2147483647) + std::string(100, '\1'), frd_bytes::elementsHeader(2147483647) + element,
        frd_bytes::inFormat('3', frd_text::frame({}, 2147483647)) + frd_text::components("DISP", kDisplacement) +
            std::string(100, '\1')}) {
    EXPECT_THAT(read(kHeading + block), IsEmpty());
    EXPECT_TRUE(cutOff_);
  }
}

TEST_F(FrdBinaryTest, DamageIsNamedWithItsByte) {
  const std::string tooMany =
      frd_bytes::result<float>({}, "NDTEMP", kTemperature, {{1, {1}}, {2, {2}}}) + "surplus\n" + kEnd;
  const std::string before = kHeading + tooMany;
  const std::size_t byte = before.size() - kEnd.size();
  EXPECT_THAT(failure(before), HasSubstr(fmt::format("job.frd:11: error: this is not the start of a result block "
                                                     "(before byte {})",
                                                     byte)));
  EXPECT_THAT(failure(kHeading + frd_bytes::elements({{1, 13, {1, 2}}})),
              HasSubstr("job.frd:7: error: the element type code 13 is not known (before byte "));
  std::string uncounted = frd_bytes::nodes({{1, {0, 0, 0}}});
  uncounted.replace(24, 12, "            ");
  EXPECT_THAT(failure(kHeading + uncounted + kEnd),
              HasSubstr("job.frd:7: error: the block is binary, and its count is missing"));
}

}  // namespace
}  // namespace importers::calculix
