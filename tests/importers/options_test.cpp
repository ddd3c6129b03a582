#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "importers/import_options.h"

namespace importers {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

TEST(ImportOptions, AreReadWithoutTouchingFiles) {
  const ImportOptions options =
      parseImportOptions({"no such directory/job.frd", "-o", "out.odb", "--deck", "other.inp", "--compress"});
  EXPECT_FALSE(options.isDone);
  EXPECT_EQ(options.input, "no such directory/job.frd");
  EXPECT_EQ(options.output, "out.odb");
  EXPECT_EQ(options.deck, "other.inp");
  EXPECT_TRUE(options.compress);
  EXPECT_FALSE(options.checksum);
  EXPECT_FALSE(options.isStrict);
  EXPECT_FALSE(options.withoutDeck);
}

TEST(ImportOptions, MayComeInAnyOrder) {
  const ImportOptions options = parseImportOptions({"--checksum", "--strict", "--output=x.odb", "job", "--no-deck"});
  EXPECT_EQ(options.input, "job");
  EXPECT_EQ(options.output, "x.odb");
  EXPECT_TRUE(options.checksum && options.isStrict && options.withoutDeck);
}

TEST(ImportOptions, HelpAndVersionEndWithoutAnError) {
  const ImportOptions help = parseImportOptions({"--help"});
  EXPECT_TRUE(help.isDone);
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.message, HasSubstr("kolvex import"));
  for (const char* option : {"--output", "--deck", "--no-deck", "--strict", "--compress", "--checksum", "--version"}) {
    EXPECT_THAT(help.message, HasSubstr(option));
  }
  const ImportOptions version = parseImportOptions({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.message, StartsWith("kolvex import "));
}

TEST(ImportOptions, WrongUsageHasStatusTwoAndAReason) {
  const std::vector<std::vector<std::string>> wrong = {
      {}, {"--unknown", "job"}, {"job", "another"}, {"job", "-o"}, {"job", "--deck", "a.inp", "--no-deck"}};
  for (const auto& arguments : wrong) {
    const ImportOptions options = parseImportOptions(arguments);
    EXPECT_TRUE(options.isDone);
    EXPECT_EQ(options.status, 2);
    EXPECT_THAT(options.message, testing::Not(IsEmpty()));
  }
}

TEST(JobFiles, AreFoundByTheNameOfTheJob) {
  for (const char* input : {"runs/job", "runs/job.", "runs/job.frd", "runs/job.inp"}) {
    ImportOptions options;
    options.input = input;
    const JobFiles files = jobFiles(options);
    EXPECT_EQ(files.results, "runs/job.frd");
    EXPECT_EQ(files.deck, "runs/job.inp");
    EXPECT_EQ(files.status, "runs/job.sta");
    EXPECT_EQ(files.output, "runs/job.odb");
  }
}

TEST(JobFiles, GiveWayToOptions) {
  ImportOptions options;
  options.input = "job.frd";
  options.output = "x/y.odb";
  options.deck = "z.inp";
  const JobFiles files = jobFiles(options);
  EXPECT_EQ(files.deck, "z.inp");
  EXPECT_EQ(files.output, "x/y.odb");
  EXPECT_EQ(files.status, "job.sta");
}

}  // namespace
}  // namespace importers
