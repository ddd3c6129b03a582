#include "tables/json_value.h"

#include <gtest/gtest.h>

namespace tables {
namespace {

TEST(JsonValue, NumbersStandAsTheyAre) {
  for (const char* number : {"0", "-0", "2.5", "1.79769e+308", "1.23457e+006", "4.5e-012", "100"}) {
    EXPECT_EQ(jsonOfValue(number), number);
  }
}

TEST(JsonValue, WhatJsonHasNoNumberForIsText) {
  for (const char* text : {"inf", "-inf", "nan", "", "-", "01", ".5", "5.", "1e", "1e+", "+1", "0x10", "1 2", "true"}) {
    EXPECT_EQ(jsonOfValue(text), '"' + std::string(text) + '"');
  }
  EXPECT_EQ(jsonOfValue("None"), "null");
  EXPECT_EQ(jsonOfValue("a\"b\\\n"), R"("a\"b\\\n")");
  EXPECT_EQ(jsonOfText("12"), "\"12\"");
  EXPECT_EQ(jsonOfText("\xff"), "\"\xef\xbf\xbd\"") << "not UTF-8";
}

TEST(JsonValue, TuplesAreArrays) {
  EXPECT_EQ(jsonOfValue("(0, 1.5, 3)"), "[0,1.5,3]");
  EXPECT_EQ(jsonOfValue("((0, 0), (0.5, 1.2e+006))"), "[[0,0],[0.5,1.2e+006]]");
  EXPECT_EQ(jsonOfValue("((0, nan), (None, -inf))"), R"([[0,"nan"],[null,"-inf"]])");
  EXPECT_EQ(jsonOfValue("()"), "[]");
}

TEST(JsonValue, WhatOnlyLooksLikeATupleIsText) {
  for (const char* text : {"(", "(1", "(1))", "(1) 2", "(1)(2)", "(1,)", "(,1)", "((1)(2))"}) {
    EXPECT_EQ(jsonOfValue(text), '"' + std::string(text) + '"');
  }
}

}  // namespace
}  // namespace tables
