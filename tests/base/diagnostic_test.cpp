#include "base/diagnostic.h"

#include <gtest/gtest.h>

#include "base/file_error.h"

namespace base {
namespace {

TEST(Diagnostic, SaysAsMuchOfThePlaceAsIsKnown) {
  EXPECT_EQ(textOf(Place{}), "");
  EXPECT_EQ(textOf(Place{"job.frd"}), "job.frd");
  EXPECT_EQ(textOf(Place{"job.frd", 12}), "job.frd:12");
  EXPECT_EQ(textOf(Place{"job.odb", 0, {}, "/steps/Step-1"}), "job.odb: /steps/Step-1");
}

TEST(Diagnostic, NamesPlaceSeverityAndReason) {
  EXPECT_EQ(textOf(warning({"job.inp", 3}, "there are no sets")), "job.inp:3: warning: there are no sets");
  EXPECT_EQ(textOf(note({"job.frd"}, "U is called U_2")), "job.frd: note: U is called U_2");
  EXPECT_EQ(textOf(Diagnostic{Severity::error, {"job.frd", 7, 400}, "is cut off"}),
            "job.frd:7: error: is cut off (before byte 400)");
  EXPECT_EQ(textOf(warning({}, "no element has a mass")), "warning: no element has a mass");
}

TEST(Diagnostic, TheFirstByteIsAByteToo) {
  EXPECT_EQ(textOf(Place{"job.frd", 0, 0}, "is empty"), "job.frd: is empty (before byte 0)");
}

TEST(Diagnostic, EscapesControlCharactersInEveryPart) {
  EXPECT_EQ(textOf(warning({"job\x1b.frd", 3, {}, "/a\nb"}, "the set \"\t\"")),
            "job\\x1b.frd:3: /a\\x0ab: warning: the set \"\\x09\"");
  EXPECT_STREQ(FileError("\x9b", "/\x7f", "\r").what(), "\\x9b: /\\x7f: \\x0d");
}

TEST(FileError, KeepsItsPartsWhateverIsInThem) {
  const FileError error("a: b.odb", "/steps/x: y", "is missing: z");
  EXPECT_STREQ(error.what(), "a: b.odb: /steps/x: y: is missing: z");
  EXPECT_EQ(error.file(), "a: b.odb");
  EXPECT_EQ(error.object(), "/steps/x: y");
  EXPECT_EQ(error.reason(), "is missing: z");
  EXPECT_STREQ(NoFileError("a.odb", "is a directory").what(), "a.odb: is a directory");
}

}  // namespace
}  // namespace base
