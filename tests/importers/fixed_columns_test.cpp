// Numbers in the usual columns, read several characters at a time, against the C library and the plain readers.
#include "importers/input/fixed_columns.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include "importers/input/text_fields.h"

namespace importers {
namespace {

TEST(ReadScientific, EqualsTheCLibraryToTheBit) {
  std::mt19937 random(4711);
  std::uniform_int_distribution<int> mantissa(0, 999999);
  std::uniform_int_distribution<int> exponent(-45, 45);
  int read = 0;
  for (int i = 0; i < 400000; ++i) {
    const int digits = mantissa(random);
    const std::string text =
        fmt::format("{}{}.{:05}E{:+03}", i % 2 == 0 ? '-' : ' ', digits / 100000, digits % 100000, exponent(random));
    ASSERT_EQ(text.size(), 12U);
    float number = 0.0F;
    if (!readScientific(text.data(), number)) continue;
    const float expected = std::strtof(text.c_str(), nullptr);
    ASSERT_EQ(number, expected) << text;
    ASSERT_EQ(std::signbit(number), std::signbit(expected)) << text;
    ++read;
  }
  EXPECT_GT(read, 200000);
}

TEST(ReadScientific, ReadsUsualNumbersAndNegativeZero) {
  float number = 1.0F;
  EXPECT_TRUE(readScientific("-0.00000E+00", number));
  EXPECT_EQ(number, 0.0F);
  EXPECT_TRUE(std::signbit(number));
  EXPECT_TRUE(readScientific(" 1.23456E+07", number));
  EXPECT_EQ(number, 1.23456e7F);
}

TEST(ReadScientific, LeavesEverythingElseToFloatFrom) {
  float number = 0.0F;
  for (const char* text :
       {"         INF", "1.23456E+070", " 1.2345E+007", " 1,23456E+07", "x1.23456E+07", " 1.23456e+07", " 1.23456E 07",
        " 1.2345 E+07", " 1.2 456E+07", "            ", " 1.23456E+0 ", " 9.00000E+38"}) {
    ASSERT_EQ(std::string_view(text).size(), 12U);
    EXPECT_FALSE(readScientific(text, number)) << text;
  }
}

// A mantissa and a power of ten whose product lies just beside the middle between two floats: rounded twice, to a
// double first, it would come out as the wrong one.
TEST(ReadScientific, LeavesWhatIsNextToTheMiddleOfTwoFloats) {
  int near = 0;
  for (int power = -32; power <= 27; ++power) {
    for (int digits = 100000; digits <= 999999; digits += 7) {
      const std::string text = fmt::format(" {}.{:05}E{:+03}", digits / 100000, digits % 100000, power);
      const double size = std::strtod(text.c_str(), nullptr);
      const double middle =
          std::ldexp(std::floor(std::ldexp(size, 24 - std::ilogb(size))) + 0.5, std::ilogb(size) - 24);
      if (std::abs(size - middle) > 1e-12 * size) continue;
      ++near;
      float number = 0.0F;
      if (!readScientific(text.data(), number)) continue;
      EXPECT_EQ(number, std::strtof(text.c_str(), nullptr)) << text;
    }
  }
  EXPECT_GT(near, 0);
}

TEST(ReadLabel, EqualsIntegerFromWhereItReads) {
  std::mt19937 random(1);
  int read = 0;
  for (int i = 0; i < 200000; ++i) {
    const int label = static_cast<int>(random() >> random() % 32);
    const std::string text = fmt::format("{:10}", label);
    int quick = -1;
    if (text.size() != 10 || !readLabel(text.data(), quick)) continue;
    ASSERT_EQ(quick, label);
    ++read;
  }
  EXPECT_GT(read, 100000);
}

// One character at a time put into a label: whatever is read is what the plain reader reads.
TEST(ReadLabel, TakesNoOtherText) {
  const std::string label = "     40917";
  int read = 0;
  for (std::size_t place = 0; place < label.size(); ++place) {
    for (int c = 0; c < 256; ++c) {
      std::string text = label;
      text[place] = static_cast<char>(c);
      int quick = -1;
      if (!readLabel(text.data(), quick)) continue;
      const std::optional<int> plain = integerFrom(text);
      ASSERT_TRUE(plain) << place << ' ' << c;
      ASSERT_EQ(quick, *plain) << text;
      ++read;
    }
  }
  EXPECT_GT(read, 50);
  int number = 0;
  for (const char* text : {"          ", "1234567890", " 123456789", "     4 917", "        -1", "        +1"}) {
    EXPECT_FALSE(readLabel(text, number)) << text;
  }
}

}  // namespace
}  // namespace importers
