#include "base/control_characters.h"

#include <gtest/gtest.h>

namespace base {
namespace {

TEST(ControlCharacters, AreThoseThatTerminalsObey) {
  for (const std::string_view text : {"\n", "a\tb", "\x1b[2J", "\x7f", "\r", "caf\xC3\xA9\xC2\x9B", "\xC2\x80",
                                      "\xC2\x85", "\x9b", "\xE2\x82\x9b and a lone \x85"}) {
    EXPECT_TRUE(hasControlCharacter(text)) << escaped(text);
  }
  EXPECT_TRUE(hasControlCharacter(std::string_view("a\0b", 3)));
}

TEST(ControlCharacters, AreNoOthers) {
  // Of "€" and "ě" the second byte alone would be one; A0 is a blank that keeps words together; E4 is Latin-1.
  for (const std::string_view text : {"", "Step-1", "Tr\xC3\xA4ger", "\xE2\x82\xAC", "\xC4\x9B", "\xC2\xA0",
                                      "Tr\xE4ger", "\xF0\x9F\x94\xA9", "cut \xE2", "\xC2"}) {
    EXPECT_FALSE(hasControlCharacter(text)) << text;
  }
}

TEST(Escaped, ShowsThemByteByByte) {
  EXPECT_EQ(escaped("a\x1b[2Jb\n"), "a\\x1b[2Jb\\x0a");
  EXPECT_EQ(escaped("\xC2\x9B\x31m"), "\\xc2\\x9b1m");
  EXPECT_EQ(escaped(std::string_view("\0", 1)), "\\x00");
  EXPECT_EQ(escaped("\x9b"), "\\x9b");
}

TEST(Escaped, LeavesAllElseAsItIs) {
  for (const std::string text : {"", "C:\\temp", "Tr\xC3\xA4ger \xE2\x82\xAC", "Tr\xE4ger"})
    EXPECT_EQ(escaped(text), text);
  EXPECT_EQ(escaped(escaped("\x07 bell")), "\\x07 bell");
}

TEST(Utf8Length, IsThatOfWholeCharactersAlone) {
  EXPECT_EQ(utf8Length("a"), 1U);
  EXPECT_EQ(utf8Length("\xC3\xA4x"), 2U);
  EXPECT_EQ(utf8Length("\xE2\x82\xAC"), 3U);
  EXPECT_EQ(utf8Length("\xF0\x9F\x94\xA9"), 4U);
  // Cut off, overlong, a surrogate, beyond the last one, a byte that starts none.
  for (const char* text : {"", "\xE2\x82", "\xC0\x80", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80"}) {
    EXPECT_EQ(utf8Length(text), 0U) << text;
  }
}

}  // namespace
}  // namespace base
