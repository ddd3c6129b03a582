#include "importers/formats/formats.h"

#include <gmock/gmock.h>

#include "importers/formats/table.h"
#include "importers_test.h"

namespace importers {
namespace {

using testing::HasSubstr;

// A format that is known by its first word.
template <char mark>
class Marked : public Importer {
 public:
  std::string resultFile(const std::string& named) const override { return named; }
  bool recognises(std::string_view start, const std::string&) const override {
    return start.find(mark) != std::string_view::npos;
  }
  std::string beginning() const override { return {mark}; }
  void addOptions(tool::Command&) override {}
  std::vector<std::string> inputs(const OpenRequest&) const override { return {}; }
  std::unique_ptr<Source> open(const OpenRequest&, const WarningSink&) override { return nullptr; }
};

template <char mark>
std::unique_ptr<Importer> make() {
  return std::make_unique<Marked<mark>>();
}

const std::vector<Format> kTable = {{"one", "files with an x", make<'x'>},
                                    {"two", "files with a y", make<'y'>},
                                    {"absent", "needs a library", nullptr}};

class FormatsTest : public testing::Test {
 protected:
  std::string formatOf(const std::string& text, const std::string& forced = "") {
    return findFormat(formats_, writeText(directory_, "job.txt", text), forced).format->format->name;
  }
  std::string refusal(const std::string& text, const std::string& forced = "") {
    return failureOf([&] { formatOf(text, forced); });
  }

  std::vector<KnownFormat> formats_ = makeFormats(kTable);
  TemporaryDirectory directory_;
};

TEST_F(FormatsTest, AreRecognisedByWhatStandsInTheFile) {
  EXPECT_EQ(formatOf("abcx"), "one");
  EXPECT_EQ(formatOf("abcy"), "two");
  EXPECT_EQ(formatOf("abcx", "two"), "two");
}

TEST_F(FormatsTest, WhatNoneOrSeveralKnowIsRefusedWithTheList) {
  EXPECT_THAT(refusal("abc"), HasSubstr("not a result file of a known format (expected one: x, or two: y)"));
  EXPECT_THAT(refusal("xy"), HasSubstr("the file may be of several formats (one, two)"));
  EXPECT_THAT(refusal("x", "three"), HasSubstr("there is no format three; the formats are one, two, absent"));
  EXPECT_THAT(refusal("x", "absent"), HasSubstr("the format absent is not in this build"));
  EXPECT_THAT(refusal(""), HasSubstr("the file is empty"));
}

TEST_F(FormatsTest, MissingFilesAreNamedWithWhatWasTried) {
  const std::vector<KnownFormat> formats = makeFormats(allFormats());
  EXPECT_EQ(failureOf([&] { findFormat(formats, directory_.file("job"), ""); }),
            directory_.file("job") + ": error: the file does not exist, nor does " + directory_.file("job.frd"));
  EXPECT_THAT(failureOf([&] { findFormat(formats, directory_.file("x.odb"), ""); }),
              HasSubstr("x.odb: error: the file does not exist"));
  const std::string database = writeText(directory_, "x.odb", "\x89HDF\r\n\x1a\n");
  EXPECT_EQ(failureOf([&] { findFormat(formats, database, ""); }),
            database + ": error: this is a database already; it needs no import");
}

TEST_F(FormatsTest, TheListTellsWhatABuildLacks) {
  EXPECT_EQ(formatList(kTable),
            "one        files with an x\ntwo        files with a y\nabsent     needs a library (not in this build)\n");
  EXPECT_THAT(formatList(allFormats()), HasSubstr("calculix"));
}

}  // namespace
}  // namespace importers
