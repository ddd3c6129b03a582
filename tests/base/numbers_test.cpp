// Numbers of every width and byte order.
#include "base/numbers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace base {
namespace {

using testing::ElementsAre;

std::vector<std::byte> bytes(std::initializer_list<int> values) {
  std::vector<std::byte> out;
  for (const int value : values) out.push_back(static_cast<std::byte>(value));
  return out;
}

std::vector<int> ints(std::initializer_list<int> stored, NumberFormat format, std::size_t count) {
  std::vector<int> out(count);
  EXPECT_FALSE(toInts(bytes(stored), format, out));
  return out;
}

TEST(NumbersTest, IntegersOfAllWidthsAndOrders) {
  EXPECT_THAT(ints({1, 0xff}, NumberFormat::int8, 2), ElementsAre(1, -1));
  EXPECT_THAT(ints({1, 0xff}, NumberFormat::uint8, 2), ElementsAre(1, 255));
  EXPECT_THAT(ints({1, 2, 0xfe, 0xff}, NumberFormat::int16, 2), ElementsAre(513, -2));
  EXPECT_THAT(ints({1, 2, 0xff, 0xfe}, NumberFormat::int16Big, 2), ElementsAre(258, -2));
  EXPECT_THAT(ints({0xff, 0xff}, NumberFormat::uint16Big, 1), ElementsAre(65535));
  EXPECT_THAT(ints({1, 0, 0, 0}, NumberFormat::int32, 1), ElementsAre(1));
  EXPECT_THAT(ints({0xff, 0xff, 0xff, 0xfe}, NumberFormat::int32Big, 1), ElementsAre(-2));
  EXPECT_THAT(ints({1, 0, 0, 0, 0, 0, 0, 0}, NumberFormat::int64, 1), ElementsAre(1));
  EXPECT_THAT(ints({0, 0, 0, 0, 0, 0, 0, 7}, NumberFormat::uint64Big, 1), ElementsAre(7));
}

TEST(NumbersTest, AnIntegerThatIsTooLargeIsFound) {
  std::vector<int> out(2);
  EXPECT_EQ(toInts(bytes({1, 0, 0, 0, 0, 0, 0, 0x80}), NumberFormat::uint32, out), 1U);
  EXPECT_EQ(toInts(bytes({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}), NumberFormat::int64, out), 1U);
  EXPECT_EQ(toInts(bytes({0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), NumberFormat::int64Big, out), 0U);
}

TEST(NumbersTest, RealsOfBothWidthsAndOrders) {
  std::vector<float> floats(1);
  std::vector<double> doubles(1);
  toFloats(bytes({0, 0, 0xc0, 0x3f}), NumberFormat::float32, floats);
  EXPECT_EQ(floats[0], 1.5F);
  toDoubles(bytes({0x3f, 0xc0, 0, 0}), NumberFormat::float32Big, doubles);
  EXPECT_EQ(doubles[0], 1.5);
  toDoubles(bytes({0xc0, 0x04, 0, 0, 0, 0, 0, 0}), NumberFormat::float64Big, doubles);
  EXPECT_EQ(doubles[0], -2.5);
  toFloats(bytes({0, 0, 0, 0, 0, 0, 0x04, 0xc0}), NumberFormat::float64, floats);
  EXPECT_EQ(floats[0], -2.5F);
}

TEST(NumbersTest, CodesThatAreNoFormatAreKnownAsSuch) {
  std::vector<int> known;
  for (int code = 0; code < 256; ++code) {
    if (isNumberFormat(static_cast<std::uint8_t>(code))) known.push_back(code);
  }
  EXPECT_THAT(known, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 19, 20, 21, 22, 23, 24, 25, 26));
}

}  // namespace
}  // namespace base
