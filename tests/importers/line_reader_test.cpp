#include "importers/input/line_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "importers/input/diagnostics.h"
#include "importers_test.h"

namespace importers {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class LineReaderTest : public testing::Test {
 protected:
  std::vector<std::string> linesOf(const std::string& text) {
    LineReader lines(writeText(directory_, "text", text));
    std::vector<std::string> all;
    std::string_view line;
    while (lines.next(line)) all.emplace_back(line);
    return all;
  }

  TemporaryDirectory directory_;
};

TEST_F(LineReaderTest, TakesEitherLineEndAndALastLineWithoutOne) {
  EXPECT_THAT(linesOf("a\nb\r\n\nc"), ElementsAre("a", "b", "", "c"));
  EXPECT_THAT(linesOf("a\n"), ElementsAre("a"));
  EXPECT_THAT(linesOf(""), ElementsAre());
}

TEST_F(LineReaderTest, CountsLinesAndTellsWhetherTheLastHasAnEnd) {
  LineReader lines(writeText(directory_, "text", "a\nb"));
  std::string_view line;
  ASSERT_TRUE(lines.next(line));
  EXPECT_EQ(lines.lineNumber(), 1);
  EXPECT_TRUE(lines.isTerminated());
  ASSERT_TRUE(lines.next(line));
  EXPECT_EQ(lines.lineNumber(), 2);
  EXPECT_FALSE(lines.isTerminated());
  EXPECT_FALSE(lines.next(line));
}

TEST_F(LineReaderTest, KeepsLinesWholeAcrossItsBuffer) {
  std::string text;
  std::vector<std::string> expected;
  for (int i = 0; i < 300000; ++i) {
    expected.push_back("line number " + std::to_string(i));
    text += expected.back() + "\n";
  }
  EXPECT_EQ(linesOf(text), expected);
}

TEST_F(LineReaderTest, RefusesALineWithoutEnd) {
  const std::string longest(LineReader::kLongestLine, 'x');
  EXPECT_EQ(linesOf("a\n" + longest).size(), 2U);
  EXPECT_THAT(failureOf([&] { linesOf("a\n" + longest + longest + "xx\n"); }),
              testing::EndsWith("text:2: error: the line is too long"));
}

TEST_F(LineReaderTest, NamesAFileThatCannotBeRead) {
  EXPECT_THAT(failureOf([&] { LineReader(directory_.file("none")); }), HasSubstr("none: error: No such file"));
  EXPECT_THAT(failureOf([&] { LineReader(directory_.file("")); }), HasSubstr("is not a regular file"));
}

TEST_F(LineReaderTest, DoesNotWaitForAPipe) {
  const std::string path = directory_.file("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_THAT(failureOf([&] { LineReader{path}; }), HasSubstr("is not a regular file"));
}

TEST_F(LineReaderTest, BytesMayStandBetweenLines) {
  LineReader lines(writeText(directory_, "a.txt", std::string("first\n\0\n\1second\n", 16)));
  std::string_view line;
  ASSERT_TRUE(lines.next(line));
  EXPECT_EQ(lines.peekAt(1, 2), "\n\1");
  char bytes[3];
  ASSERT_TRUE(lines.readBytes(bytes, 3));
  EXPECT_EQ(std::string(bytes, 3), std::string("\0\n\1", 3));
  EXPECT_EQ(lines.offset(), 9U);
  EXPECT_EQ(lines.bytesLeft(), 7U);
  ASSERT_TRUE(lines.next(line));
  EXPECT_EQ(line, "second");
  EXPECT_EQ(lines.lineNumber(), 2);
  EXPECT_FALSE(lines.readBytes(bytes, 1)) << "nothing is left";
  EXPECT_EQ(lines.peekAt(0, 5), "");
}

TEST_F(LineReaderTest, ManyBytesComeWhole) {
  std::string text = "start\n";
  while (text.size() < 5 * LineReader::kLongestLine + 1234) text += std::to_string(text.size()) + ' ';
  text += "\nend\n";
  const std::string path = writeText(directory_, "a.txt", text);
  for (const std::size_t size : {std::size_t{3}, LineReader::kLongestLine, 5 * LineReader::kLongestLine}) {
    LineReader lines(path);
    std::string_view line;
    ASSERT_TRUE(lines.next(line));
    std::string bytes(size, ' ');
    ASSERT_EQ(lines.peekAt(size, 10), text.substr(6 + size, 10));
    ASSERT_TRUE(lines.readBytes(bytes.data(), size));
    EXPECT_EQ(bytes, text.substr(6, size));
    EXPECT_EQ(lines.offset(), 6 + size);
    lines.skipBytes(text.size() - 4 - lines.offset(), 7);
    ASSERT_TRUE(lines.next(line));
    EXPECT_EQ(line, "end");
    EXPECT_EQ(lines.lineNumber(), 9);
  }
}

TEST_F(LineReaderTest, ErrorsHaveTheirLineAndBehindBytesTheirByte) {
  const std::string path = writeText(directory_, "a.txt", "one\ntwo\n1234567");
  LineReader lines(path);
  const auto failure = [&]() -> SourcePlace {
    try {
      lines.fail("is wrong");
    } catch (const ImportError& error) {
      EXPECT_EQ(error.reason(), "is wrong");
      return error.place();
    }
  };
  std::string_view line;
  ASSERT_TRUE(lines.next(line) && lines.next(line));
  EXPECT_EQ(failure(), (SourcePlace{path, 2}));
  char bytes[3];
  ASSERT_TRUE(lines.readBytes(bytes, 3));
  EXPECT_EQ(failure(), (SourcePlace{path, 2, 11}));
}

}  // namespace
}  // namespace importers
