#include "importers/input/text_fields.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

namespace importers {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Columns, CountFromOneAndEndWithTheLine) {
  EXPECT_EQ(columns("abcdef", 1, 3), "abc");
  EXPECT_EQ(columns("abcdef", 5, 12), "ef");
  EXPECT_EQ(columns("abcdef", 7, 3), "");
  EXPECT_EQ(columns("", 14, 12), "");
}

TEST(IntegerFrom, PassesOverBlanksAndASign) {
  EXPECT_EQ(integerFrom("       12"), 12);
  EXPECT_EQ(integerFrom("+7 "), 7);
  EXPECT_EQ(integerFrom("\t-3"), -3);
  EXPECT_EQ(integerFrom("2147483647"), 2147483647);
}

TEST(IntegerFrom, TakesNothingElse) {
  for (const char* text : {"", "   ", "1.0", "12a", "1 2", "+-1", "++1", "2147483648", "1e3", "0x10"}) {
    EXPECT_FALSE(integerFrom(text)) << text;
  }
}

TEST(NumberFrom, TakesWhatSolversPrint) {
  EXPECT_EQ(numberFrom(" -1.93000E+01"), -19.3);
  EXPECT_EQ(numberFrom("1.000000000"), 1.0);
  EXPECT_EQ(numberFrom("+2.5"), 2.5);
  EXPECT_EQ(numberFrom("12"), 12.0);
  EXPECT_EQ(numberFrom("INF"), kInfinity);
  EXPECT_EQ(numberFrom("        -INF"), -kInfinity);
  EXPECT_TRUE(std::isnan(numberFrom("NaN").value_or(0.0)));
}

TEST(NumberFrom, MendsAnExponentWithoutItsLetter) {
  EXPECT_EQ(numberFrom("5.717277-124"), 5.717277e-124);
  EXPECT_EQ(numberFrom("-5.717277+124"), -5.717277e124);
}

TEST(NumberFrom, BeyondTheRangeIsNothingOrEverything) {
  EXPECT_EQ(numberFrom("1.0E+400"), kInfinity);
  EXPECT_EQ(numberFrom("-1.0+400"), -kInfinity);
  EXPECT_EQ(numberFrom("1.0E-400"), 0.0);
  EXPECT_TRUE(std::signbit(numberFrom("-1.0E-400").value_or(1.0)));
  EXPECT_EQ(numberFrom(std::string(400, '9')), kInfinity);
}

TEST(NumberFrom, TakesNothingElse) {
  for (const char* text : {"", "  ", "abc", "1.0.0", "--1", "+-1", "1.0E", "1.0-", "1 2", "-+5", "0x1p3", "1,5"}) {
    EXPECT_FALSE(numberFrom(text)) << text;
  }
}

TEST(FloatFrom, HasTheRangeOfFloats) {
  EXPECT_EQ(floatFrom("1.00000E+39"), std::numeric_limits<float>::infinity());
  EXPECT_EQ(floatFrom("-1.00000E+39"), -std::numeric_limits<float>::infinity());
  EXPECT_EQ(floatFrom("1.00000E-60"), 0.0F);
  EXPECT_EQ(floatFrom("1.17549E-40"), std::strtof("1.17549E-40", nullptr));
  EXPECT_EQ(floatFrom("5.717277-24"), 5.717277e-24F);
}

TEST(StorableText, KeepsUtf8AndMendsTheRest) {
  EXPECT_EQ(storableText("plain"), "plain");
  EXPECT_EQ(storableText("Tr\xC3\xA4ger \xE2\x82\xAC \xF0\x9F\x94\xA9"), "Tr\xC3\xA4ger \xE2\x82\xAC \xF0\x9F\x94\xA9");
  EXPECT_EQ(storableText("Tr\xE4ger"), "Tr\xC3\xA4ger");
  EXPECT_EQ(storableText("cut \xE2\x82"), "cut \xC3\xA2 ");
  EXPECT_EQ(storableText(std::string_view("a\tb\0c\x7F", 6)), "a b c ");
  EXPECT_EQ(storableText("\xC2\x9B[2J \x85."), " [2J  .");
  EXPECT_EQ(storableText("\xC0\x80 \xED\xA0\x80"), "\xC3\x80  \xC3\xAD\xC2\xA0 ");
}

TEST(Utf8Text, KeepsControlCharacters) {
  EXPECT_EQ(utf8Text("a\x1b\xE4\x85\xE2\x82\xAC"), "a\x1b\xC3\xA4\xC2\x85\xE2\x82\xAC");
}

}  // namespace
}  // namespace importers
