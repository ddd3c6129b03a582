#include "tool/command.h"

#include <gmock/gmock.h>

namespace tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class CommandTest : public testing::Test {
 protected:
  CommandTest() {
    command_.synopsis("FILE... [options]")
        .describe("Weighs files.")
        .arguments("FILE", files_, "what to weigh")
        .flag("-q,--quiet", quiet_, "say nothing")
        .option("-o,--output", "TABLE", output_, "where to write", Completes::file)
        .number("--limit", "N", limit_, 1, 20, "how many at most")
        .group("Units")
        .choice(
            "--unit", "UNIT", {"kg", "lb"}, [this](const std::string& unit) { units_.push_back(unit); },
            "what to weigh in")
        .repeated()
        .option("--of", "NAME", output_, "a name", Completes::computed)
        .exclusive("--quiet", "--output")
        .exitStatus(0, "all weighed")
        .example("weigh stone -o table")
        .completeBy([](const std::string& option, const std::vector<std::string>& words) {
          return std::vector<std::string>{option + "-" + words.front(), "other"};
        });
  }

  Command command_{"weigh", "weigh files"};
  std::vector<std::string> files_;
  std::string output_;
  std::vector<std::string> units_;
  bool quiet_ = false;
  std::size_t limit_ = 5;
};

TEST_F(CommandTest, OptionsAndArgumentsComeInAnyOrder) {
  const Outcome outcome =
      command_.parse({"--unit", "kg", "stone", "--output=table", "--limit", "7", "feather", "--unit=lb"});
  EXPECT_FALSE(outcome.isDone) << outcome.text;
  EXPECT_THAT(files_, ElementsAre("stone", "feather"));
  EXPECT_THAT(units_, ElementsAre("kg", "lb"));
  EXPECT_EQ(output_, "table");
  EXPECT_EQ(limit_, 7U);
  EXPECT_FALSE(quiet_);
}

TEST_F(CommandTest, WrongUsageSaysWhatWouldBeRight) {
  const auto refused = [&](const std::vector<std::string>& arguments) {
    const Outcome outcome = command_.parse(arguments);
    EXPECT_TRUE(outcome.isDone);
    EXPECT_EQ(outcome.status, 2);
    return outcome.text;
  };
  EXPECT_THAT(refused({}), HasSubstr("FILE is required"));
  EXPECT_THAT(refused({"a", "--unit", "stone"}), HasSubstr("weigh: --unit: \"stone\" is not one of kg, lb"));
  EXPECT_THAT(refused({"a", "--limit", "21"}), HasSubstr("\"21\" is not a whole number from 1 to 20"));
  EXPECT_THAT(refused({"a", "--limit", "-1"}), HasSubstr("--limit"));
  EXPECT_THAT(refused({"a", "--limit", "1", "--limit", "2"}), HasSubstr("--limit"));
  EXPECT_THAT(refused({"a", "-q", "-o", "t"}), HasSubstr("excludes"));
  EXPECT_THAT(refused({"a", "--nonsense"}), HasSubstr("--nonsense"));
  EXPECT_THAT(refused({"a", "--nonsense"}), HasSubstr("weigh --help"));
  EXPECT_THAT(refused({"a", "--unit", "\x1b[2J"}), HasSubstr("\"\\x1b[2J\" is not one of"));
}

TEST_F(CommandTest, HelpHasAllThatThereIs) {
  const Outcome outcome = command_.parse({"--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.text, StartsWith("weigh - weigh files\n\nUsage:\n  weigh FILE... [options]\n"));
  for (const char* part : {"Weighs files.", "  FILE...                   what to weigh\n",
                           "  -q, --quiet               say nothing\n", "\nUnits:\n  --unit UNIT ", "may be repeated",
                           "  0                         all weighed\n", "  weigh stone -o table\n", "--version"}) {
    EXPECT_THAT(outcome.text, HasSubstr(part));
  }
}

TEST_F(CommandTest, LinesOfTheHelpAreNoLongerThanATerminal) {
  command_.flag("--long", quiet_,
                std::string("word ") + "and many more words, so many that they need several lines, " +
                    "which begin below each other and end before the edge");
  std::istringstream lines(command_.help());
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
}

TEST_F(CommandTest, TheManPageHasTheSame) {
  const std::string page = command_.parse({"--man"}).text;
  EXPECT_THAT(page, StartsWith(".TH \"weigh\" 1 "));
  EXPECT_THAT(page, HasSubstr(".TP\n.B \\-o, \\-\\-output TABLE\nwhere to write\n"));
  EXPECT_THAT(page, HasSubstr(".SS Units\n"));
  EXPECT_THAT(page, HasSubstr(".SH EXIT STATUS\n.TP\n.B 0\nall weighed\n"));
}

}  // namespace
}  // namespace tool
