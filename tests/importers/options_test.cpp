#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "importers/import_options.h"

namespace importers {
namespace {

using testing::ElementsAre;
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

TEST(ImportOptions, PrintedTablesAreChosen) {
  const ImportOptions plain = parseImportOptions({"job"});
  EXPECT_FALSE(plain.withoutPrinted);
  EXPECT_EQ(plain.stressAt, calculix::StressAt::nodes);
  EXPECT_EQ(plain.historyLimit, 1000U);
  const ImportOptions options =
      parseImportOptions({"job", "--dat", "tables", "--stress-at", "integration-points", "--history-limit", "20000"});
  EXPECT_EQ(options.printed, "tables");
  EXPECT_EQ(options.stressAt, calculix::StressAt::integrationPoints);
  EXPECT_EQ(options.historyLimit, 20000U);
  EXPECT_EQ(jobFiles(plain).printed, "job.dat");
  EXPECT_EQ(jobFiles(options).printed, "tables");
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"job", "--dat", "x", "--no-dat"},
                                                {"job", "--stress-at", "nowhere"},
                                                {"job", "--history-limit", "-1"},
                                                {"job", "--history-limit", "many"}}) {
    EXPECT_EQ(parseImportOptions(wrong).status, 2) << wrong.back();
  }
}

TEST(ImportOptions, MassIsMadeUnlessItIsDeclined) {
  EXPECT_TRUE(parseImportOptions({"job"}).withMass);
  EXPECT_FALSE(parseImportOptions({"job", "--no-mass"}).withMass);
}

TEST(ImportOptions, HelpAndVersionEndWithoutAnError) {
  const ImportOptions help = parseImportOptions({"--help"});
  EXPECT_TRUE(help.isDone);
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.message, HasSubstr("kolvex import"));
  for (const char* option :
       {"--output", "--deck", "--no-deck", "--no-mass", "--strict", "--compress", "--checksum", "--list", "--field",
        "--step", "--frames", "--dat", "--no-dat", "--stress-at", "--history-limit", "--version"}) {
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

TEST(ImportOptions, ASelectionMayNameSeveralFieldsAndSteps) {
  const ImportOptions options =
      parseImportOptions({"--field", "S", "--field=u", "--step", "1,3", "--step", "5", "--frames", "2-4", "job"});
  EXPECT_FALSE(options.isDone) << options.message;
  EXPECT_EQ(options.input, "job");
  EXPECT_THAT(options.selection.fields, ElementsAre("S", "u"));
  EXPECT_THAT(options.selection.steps, ElementsAre(1, 3, 5));
  EXPECT_EQ(options.selection.frames.kind, FrameChoice::Kind::range);
  EXPECT_EQ(options.selection.frames.from, 2);
  EXPECT_EQ(options.selection.frames.to, 4);
  EXPECT_FALSE(options.selection.isEverything());
  EXPECT_TRUE(parseImportOptions({"job", "--frames", "all"}).selection.isEverything());
}

TEST(ImportOptions, SelectionsOfNothingAreWrongUsage) {
  for (const char* frames : {"", "none", "-1", "3-", "-3", "5-2", "1-2-3", "1.5"}) {
    EXPECT_EQ(parseImportOptions({"job", std::string("--frames=") + frames}).status, 2) << frames;
  }
  for (const char* step : {"0", "-1", "x", "1;2", "1.5"}) {
    EXPECT_EQ(parseImportOptions({"job", std::string("--step=") + step}).status, 2) << step;
  }
}

}  // namespace
}  // namespace importers
