#include "odbstore/names.h"

#include <gtest/gtest.h>

namespace odbstore {
namespace {

TEST(Names, EscapesWhatHdf5WouldTakeForAPath) {
  EXPECT_EQ(linkFromName("S/top"), "S%2Ftop");
  EXPECT_EQ(linkFromName("50%"), "50%25");
  EXPECT_EQ(linkFromName("."), "%2E");
  EXPECT_EQ(linkFromName("a.b"), "a.b");
  EXPECT_EQ(linkFromName(".."), "..");
  EXPECT_EQ(linkFromName("Gr\xc3\xb6\xc3\x9f"
                         "e"),
            "Gr\xc3\xb6\xc3\x9f"
            "e");
}

TEST(Names, ComeBackFromTheirLinks) {
  for (const char* name : {"S/top", "50%", ".", "%2F", "%", "a%2Eb", "", "100%25 /."}) {
    EXPECT_EQ(nameFromLink(linkFromName(name)), name);
  }
}

TEST(Names, TakeAPercentSignThatStartsNoEscapeAsItIs) {
  EXPECT_EQ(nameFromLink("%"), "%");
  EXPECT_EQ(nameFromLink("5%zz"), "5%zz");
  EXPECT_EQ(nameFromLink("%2"), "%2");
}

}  // namespace
}  // namespace odbstore
