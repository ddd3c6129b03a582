#include "tool/quantities.h"

#include <gtest/gtest.h>

#include "tool/command.h"

namespace tool {
namespace {

TEST(Quantities, TimesHaveUnits) {
  EXPECT_EQ(durationFrom("90").count(), 90'000);
  EXPECT_EQ(durationFrom("0.25").count(), 250);
  EXPECT_EQ(durationFrom("90s").count(), 90'000);
  EXPECT_EQ(durationFrom("1.5m").count(), 90'000);
  EXPECT_EQ(durationFrom("2h").count(), 7'200'000);
  EXPECT_EQ(durationFrom("1d").count(), 86'400'000);
  EXPECT_EQ(durationFrom("0.00001").count(), 1) << "no limit of 0, which would be none";
}

TEST(Quantities, SizesHaveUnits) {
  EXPECT_EQ(bytesFrom("12"), 12U);
  EXPECT_EQ(bytesFrom("500M"), 500'000'000U);
  EXPECT_EQ(bytesFrom("1.5G"), 1'500'000'000U);
  EXPECT_EQ(bytesFrom("2K"), 2'000U);
  EXPECT_EQ(bytesFrom("3T"), 3'000'000'000'000U);
}

TEST(Quantities, WhatIsOddIsRefused) {
  for (const char* text : {"", "0", "-1", "s", "1 s", "1e3", "inf", "nan", "0x10", "1mm", "9999999999d", "1,5"}) {
    EXPECT_THROW(durationFrom(text), UsageError) << text;
    EXPECT_THROW(bytesFrom(text), UsageError) << text;
  }
  EXPECT_THROW(bytesFrom("9999999999T"), UsageError);
}

TEST(Quantities, DurationsAreForPeople) {
  EXPECT_EQ(durationText(0.4), "0 s");
  EXPECT_EQ(durationText(99), "99 s");
  EXPECT_EQ(durationText(600), "10 min");
  EXPECT_EQ(durationText(7200), "2.0 h");
  EXPECT_EQ(durationText(864000), "10.0 days");
}

}  // namespace
}  // namespace tool
