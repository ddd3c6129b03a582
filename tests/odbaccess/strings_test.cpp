#include <gtest/gtest.h>

#include "odbaccess/odb_String.h"

namespace {

TEST(Strings, AnEmptyStringShowsTheEmptyText) {
  EXPECT_STREQ(odb_String().cStr(), "");
  EXPECT_STREQ(odb_String("").cStr(), "");
  EXPECT_EQ(odb_String().length(), 0);
}

TEST(Strings, AnIntegerBecomesItsDecimalText) {
  EXPECT_STREQ(odb_String(0).cStr(), "0");
  EXPECT_STREQ(odb_String(-17).cStr(), "-17");
  EXPECT_STREQ(odb_String(2147483647).cStr(), "2147483647");
}

TEST(Strings, AppendLeavesCopiesAsTheyWere) {
  odb_String name("Step");
  const odb_String copy = name;
  name.append("-1");
  EXPECT_STREQ(name.cStr(), "Step-1");
  EXPECT_STREQ(copy.cStr(), "Step");
}

TEST(Strings, ConvertFromTheReportString) {
  const atr_String report("text");
  odb_String name = report;
  EXPECT_STREQ(name.cStr(), "text");
  name = atr_String("other");
  EXPECT_STREQ(name.cStr(), "other");
}

TEST(Strings, FindGivesThePositionOrTheLength) {
  const atr_String name("model.odb.old");
  EXPECT_EQ(name.Find(".odb", 0), 5);
  EXPECT_EQ(name.Find(".odb", 5), 5);
  EXPECT_EQ(name.Find(".odb", 6), 13);
  EXPECT_EQ(name.Find("x", 0), 13);
  EXPECT_EQ(name.Find(".odb", 99), 13);
  EXPECT_EQ(atr_String().Find(".odb", 0), 0);
}

TEST(Strings, CompareByBytesTakenAsUnsigned) {
  EXPECT_LT(odb_String("Z"), odb_String("a"));
  EXPECT_LT(odb_String("z"), odb_String("\xc3\xa4"));
  EXPECT_LT(odb_String("a"), odb_String("ab"));
  EXPECT_EQ(odb_String("a"), odb_String(atr_String("a")));
}

}  // namespace
