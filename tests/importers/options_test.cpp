#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "import_options.h"
#include "importers/formats/table.h"

namespace importers {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// A command line, read.
struct Read {
  explicit Read(const std::vector<std::string>& arguments)
      : outcome(importCommand(options, formats).parse(arguments)) {}

  // The files that an import of job.frd reads: results, deck, status, printed tables.
  std::vector<std::string> inputs() const {
    const Importer& importer = *formats.front().importer;
    return importer.inputs({importer.resultFile(options.input), false, true, true});
  }

  ImportOptions options;
  std::vector<KnownFormat> formats = makeFormats(allFormats());
  tool::Outcome outcome;
};

TEST(ImportOptions, AreReadWithoutTouchingFiles) {
  const Read read({"no such directory/job.frd", "-o", "out.odb", "--deck", "other.inp", "--compress"});
  EXPECT_FALSE(read.outcome.isDone) << read.outcome.text;
  EXPECT_EQ(read.options.input, "no such directory/job.frd");
  EXPECT_EQ(outputOf(read.options, *read.formats.front().importer, "no such directory/job.frd"), "out.odb");
  EXPECT_EQ(read.inputs()[1], "other.inp");
  EXPECT_TRUE(read.options.compress);
  EXPECT_FALSE(read.options.checksum);
  EXPECT_FALSE(read.options.isStrict);
}

TEST(ImportOptions, MayComeInAnyOrder) {
  const Read read({"--checksum", "--strict", "--output=x.odb", "job", "--no-deck"});
  EXPECT_EQ(read.options.input, "job");
  EXPECT_EQ(read.options.output, "x.odb");
  EXPECT_TRUE(read.options.checksum && read.options.isStrict);
}

TEST(ImportOptions, PrintedTablesAreChosen) {
  EXPECT_EQ(Read({"job"}).inputs()[3], "job.dat");
  EXPECT_EQ(Read({"job", "--dat", "tables"}).inputs()[3], "tables");
  EXPECT_FALSE(Read({"job", "--stress-at", "integration-points", "--history-limit", "20000"}).outcome.isDone);
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"job", "--dat", "x", "--no-dat"},
                                                {"job", "--stress-at", "nowhere"},
                                                {"job", "--history-limit", "-1"},
                                                {"job", "--history-limit", "many"}}) {
    EXPECT_EQ(Read(wrong).outcome.status, 2) << wrong.back();
  }
}

TEST(ImportOptions, MassIsMadeUnlessItIsDeclined) {
  EXPECT_TRUE(Read({"job"}).options.withMass);
  EXPECT_FALSE(Read({"job", "--no-mass"}).options.withMass);
}

TEST(ImportOptions, HelpAndVersionEndWithoutAnError) {
  const tool::Outcome help = Read({"--help"}).outcome;
  EXPECT_TRUE(help.isDone);
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.text, HasSubstr("kolvex import"));
  EXPECT_THAT(help.text, testing::Not(HasSubstr("{")));
  for (const char* option :
       {"--output",   "--deck",      "--no-deck",       "--no-mass",  "--strict",       "--compress",
        "--checksum", "--list",      "--field",         "--step",     "--frames",       "--dat",
        "--no-dat",   "--stress-at", "--history-limit", "--version",  "--format",       "--formats",
        "--json",     "--rename",    "--keep-names",    "--no-group", "--group-numbers"}) {
    EXPECT_THAT(help.text, HasSubstr(option));
  }
  const tool::Outcome version = Read({"--version"}).outcome;
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.text, StartsWith("kolvex import "));
}

TEST(ImportOptions, WrongUsageHasStatusTwoAndAReason) {
  const std::vector<std::vector<std::string>> wrong = {{"--unknown", "job"},
                                                       {"job", "another"},
                                                       {"job", "-o"},
                                                       {"job", "--format", "none"},
                                                       {"job", "--deck", "a.inp", "--no-deck"}};
  for (const auto& arguments : wrong) {
    const tool::Outcome outcome = Read(arguments).outcome;
    EXPECT_TRUE(outcome.isDone);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.text, testing::Not(IsEmpty()));
  }
}

TEST(ImportOptions, FilesAreFoundByTheNameOfTheJob) {
  for (const char* input : {"runs.2/job", "runs.2/job.", "runs.2/job.frd", "runs.2/job.inp"}) {
    const Read read({input});
    EXPECT_THAT(read.inputs(), ElementsAre("runs.2/job.frd", "runs.2/job.inp", "runs.2/job.sta", "runs.2/job.dat"));
    EXPECT_EQ(outputOf(read.options, *read.formats.front().importer, read.inputs()[0]), "runs.2/job.odb");
  }
}

TEST(ImportOptions, ASelectionMayNameSeveralFieldsAndSteps) {
  const Read read({"--field", "S", "--field=u", "--step", "1,3", "--step", "5", "--frames", "2-4", "job"});
  EXPECT_FALSE(read.outcome.isDone) << read.outcome.text;
  const Selection& selection = read.options.selection;
  EXPECT_EQ(read.options.input, "job");
  EXPECT_THAT(selection.fields, ElementsAre("S", "u"));
  EXPECT_THAT(selection.steps, ElementsAre(1, 3, 5));
  EXPECT_EQ(selection.frames.kind, FrameChoice::Kind::range);
  EXPECT_EQ(selection.frames.from, 2);
  EXPECT_EQ(selection.frames.to, 4);
  EXPECT_FALSE(selection.isEverything());
  EXPECT_TRUE(Read({"job", "--frames", "all"}).options.selection.isEverything());
}

TEST(ImportOptions, SelectionsOfNothingAreWrongUsage) {
  for (const char* frames : {"", "none", "-1", "3-", "-3", "5-2", "1-2-3", "1.5"}) {
    EXPECT_EQ(Read({"job", std::string("--frames=") + frames}).outcome.status, 2) << frames;
  }
  for (const char* step : {"0", "-1", "x", "1;2", "1.5", "1,"}) {
    EXPECT_EQ(Read({"job", std::string("--step=") + step}).outcome.status, 2) << step;
  }
}

}  // namespace
}  // namespace importers
