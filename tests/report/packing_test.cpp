#include "report/packing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "report/importance.h"
#include "report/morton.h"
#include "report/page_data.h"

namespace {

using testing::ElementsAre;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(Base64, IsThatOfTheTestVectors) {  // RFC 4648, section 10
  EXPECT_EQ(report::base64(""), "");
  EXPECT_EQ(report::base64("f"), "Zg==");
  EXPECT_EQ(report::base64("fo"), "Zm8=");
  EXPECT_EQ(report::base64("foo"), "Zm9v");
  EXPECT_EQ(report::base64("foob"), "Zm9vYg==");
  EXPECT_EQ(report::base64("foobar"), "Zm9vYmFy");
  EXPECT_EQ(report::base64("\xff\xfe\xfd"), "//79");
}

TEST(Quantize, KeepsBothEndsExactly) {
  const std::vector<float> rows = {3.0F, -1.5F, 0.75F, 7.25F};
  const report::Quantized made = report::quantize(rows, 1, 0);
  EXPECT_EQ(made.lowest, -1.5);
  EXPECT_EQ(made.highest, 7.25);
  EXPECT_EQ(made.items[1], 0U);
  EXPECT_EQ(made.items[3], report::kQuantized);
}

TEST(Quantize, IsWithinHalfAStep) {
  std::vector<float> rows;
  for (int i = 0; i < 1000; ++i) rows.push_back(std::sin(static_cast<float>(i)) * 1e-20F);
  const report::Quantized made = report::quantize(rows, 1, 0);
  const double step = (made.highest - made.lowest) / report::kQuantized;
  for (std::size_t i = 0; i < rows.size(); ++i)
    EXPECT_NEAR(made.lowest + step * made.items[i], static_cast<double>(rows[i]), 0.501 * step);
}

TEST(Quantize, TakesAColumnOfItsRows) {
  const std::vector<float> rows = {0, 10, 1, 20, 2, 40};
  EXPECT_THAT(report::quantize(rows, 2, 0).items, ElementsAre(0, 32767, 65534));
  EXPECT_EQ(report::quantize(rows, 2, 1).highest, 40);
}

TEST(Quantize, MarksWhatIsNotFinite) {
  const std::vector<float> rows = {kNaN, 1.0F, kInfinity, 2.0F, -kInfinity};
  EXPECT_THAT(report::quantize(rows, 1, 0).items, ElementsAre(65535, 0, 65535, 65534, 65535));
}

TEST(Quantize, StandsWithoutAnyNumberAndWithEqualOnes) {
  EXPECT_THAT(report::quantize(std::vector<float>{kNaN, kNaN}, 1, 0).items, ElementsAre(65535, 65535));
  const report::Quantized equal = report::quantize(std::vector<float>{5.0F, 5.0F}, 1, 0);
  EXPECT_THAT(equal.items, ElementsAre(0, 0));
  EXPECT_EQ(equal.lowest, 5.0);
  EXPECT_EQ(equal.highest, 5.0);
}

TEST(Quantize, ReachesOverTheWholeRangeOfFloats) {
  const float most = std::numeric_limits<float>::max();
  EXPECT_THAT(report::quantize(std::vector<float>{-most, 0.0F, most}, 1, 0).items, ElementsAre(0, 32767, 65534));
}

TEST(Morton, GoesThroughTheCornersOfACubeAsTheBitsSay) {
  std::vector<float> corners;
  for (int i = 7; i >= 0; --i) corners.insert(corners.end(), {float(i & 1), float(i >> 1 & 1), float(i >> 2 & 1)});
  EXPECT_THAT(report::mortonOrder(corners), ElementsAre(7U, 6U, 5U, 4U, 3U, 2U, 1U, 0U));
}

TEST(Morton, StandsPointsThatAreNowhere) {
  EXPECT_THAT(report::mortonOrder(std::vector<float>{kNaN, 0, 0, 1, 1, 1, 0, 0, 0}), ElementsAre(0U, 2U, 1U));
  EXPECT_THAT(report::mortonOrder(std::vector<float>{2, 2, 2, 2, 2, 2}), ElementsAre(0U, 1U));
}

TEST(Spread, TakesTheEndsFirstAndThenTheMiddles) {
  EXPECT_THAT(report::spread(0), ElementsAre());
  EXPECT_THAT(report::spread(1), ElementsAre(0));
  EXPECT_THAT(report::spread(2), ElementsAre(1, 0));
  EXPECT_THAT(report::spread(9), ElementsAre(8, 0, 4, 2, 6, 1, 3, 5, 7));
}

TEST(Importance, HasTheLastFramesFirstAndDetailsLast) {
  const std::vector<report::StepFields> steps = {{2, {{"NT", false, {0, 1}}, {"S", true, {0, 1}}, {"U", false, {1}}}},
                                                 {1, {{"S", true, {0}}}}};
  using C = report::Candidate;
  EXPECT_THAT(report::byImportance(steps), ElementsAre(C{0, 1, "U", false}, C{0, 1, "S", false}, C{0, 1, "NT", false},
                                                       C{1, 0, "S", false}, C{0, 0, "S", false}, C{0, 0, "NT", false},
                                                       C{0, 1, "S", true}, C{1, 0, "S", true}, C{0, 0, "S", true}));
}

TEST(PageData, Counts) {
  report::PageData data(100);
  EXPECT_TRUE(data.hasRoomFor(100));
  data.reserve(60);
  EXPECT_TRUE(data.hasRoomFor(40));
  EXPECT_FALSE(data.hasRoomFor(41));
  data.reserve(60);
  EXPECT_EQ(data.room(), 0U);
}

}  // namespace
