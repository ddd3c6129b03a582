#include "tool/completion.h"

#include <gmock/gmock.h>

#include <optional>

#include "tool/command.h"

namespace tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Words = std::vector<std::string>;

class CompletionTest : public testing::Test {
 protected:
  CompletionTest() {
    command_.argument("FILE", text_, "what to weigh")
        .optionalArgument("PLACE", text_, "where", Completes::directory)
        .flag("-q,--quiet", quiet_, "say nothing")
        .option("-o,--output", "TABLE", text_, "where to write", Completes::file)
        .option("--title", "TEXT", text_, "a heading")
        .choice(
            "--unit", "UNIT", {"kg", "lb"}, [](const std::string&) {}, "what to weigh in")
        .option("--of", "NAME", text_, "a name", Completes::computed)
        .completeBy([this](const std::string& option, const Words& words) {
          asked_ = {option, words};
          return Words{"stone", "straw", "wood"};
        });
  }

  Words words(const Words& line, std::size_t at) const { return command_.complete({line, at}).words; }
  Completes files(const Words& line, std::size_t at) const { return command_.complete({line, at}).files; }

  Command command_{"weigh", "weigh files"};
  std::string text_;
  bool quiet_ = false;
  std::pair<std::string, Words> asked_;
};

TEST_F(CompletionTest, NamesOfOptionsAreThoseThatBeginSo) {
  EXPECT_THAT(words({"--o"}, 0), ElementsAre("--output", "--of"));
  EXPECT_THAT(words({"x", "-"}, 1),
              ElementsAre("-q", "--quiet", "-o", "--output", "--title", "--unit", "--of", "-h", "--help", "--version"));
  EXPECT_THAT(words({"--nonsense"}, 0), IsEmpty());
}

TEST_F(CompletionTest, NothingBehindTwoDashesIsAnOption) {
  EXPECT_THAT(words({"--", "-"}, 1), IsEmpty());
  EXPECT_EQ(files({"--", "-"}, 1), Completes::file);
}

TEST_F(CompletionTest, ArgumentsComeInTheirOrder) {
  EXPECT_EQ(files({}, 0), Completes::file);
  EXPECT_EQ(files({"stone"}, 1), Completes::directory);
  EXPECT_EQ(files({"--title", "stone"}, 2), Completes::file) << "\"stone\" is the title";
  EXPECT_EQ(files({"-q", "stone", ""}, 2), Completes::directory);
  EXPECT_EQ(files({"stone", "here", ""}, 2), Completes::nothing);
}

TEST_F(CompletionTest, ValuesAreThoseOfTheirOption) {
  EXPECT_THAT(words({"--unit"}, 1), ElementsAre("kg", "lb"));
  EXPECT_THAT(words({"--unit", "l"}, 1), ElementsAre("lb"));
  EXPECT_THAT(words({"--unit=k"}, 0), ElementsAre("kg"));
  EXPECT_THAT(words({"--unit", "kg", "x"}, 1), ElementsAre("kg")) << "in the middle of the line";
  EXPECT_EQ(files({"-o", "t"}, 1), Completes::file);
  EXPECT_EQ(files({"--title", ""}, 1), Completes::nothing);
  EXPECT_EQ(files({"--nonsense=", ""}, 0), Completes::nothing);
}

TEST_F(CompletionTest, WhatIsComputedKnowsTheRestOfTheLine) {
  EXPECT_THAT(words({"box", "--of", "st"}, 2), ElementsAre("stone", "straw"));
  EXPECT_EQ(asked_.first, "--of");
  EXPECT_EQ(asked_.second, Words{"box"});
  EXPECT_THAT(words({"--of=w", "box", "-q"}, 0), ElementsAre("wood"));
  EXPECT_EQ(asked_.second, (Words{"box", "-q"}));
  EXPECT_THAT(words({"-q", "--of"}, 2), ElementsAre("stone", "straw", "wood"));
  EXPECT_EQ(asked_.second, Words{"-q"});
}

TEST_F(CompletionTest, ProgramsAnswerTheShell) {
  EXPECT_EQ(command_.parse({"--complete", "2", "box", "--of", "wo"}).text, "nothing\nwood\n");
  EXPECT_EQ(command_.parse({"--complete", "0"}).text, "file\n");
  EXPECT_EQ(command_.parse({"--complete", "1", "box"}).text, "directory\n");
}

TEST_F(CompletionTest, NoRequestEndsInAMessage) {
  for (const Words& wrong : {Words{}, Words{"x"}, Words{"-1"}, Words{"2", "a"}, Words{"1x", "a"}, Words{""},
                             Words{"99999999999999999999999"}}) {
    EXPECT_EQ(completionRequestFrom(wrong), std::nullopt);
    Words arguments = {"--complete"};
    arguments.insert(arguments.end(), wrong.begin(), wrong.end());
    const Outcome outcome = command_.parse(arguments);
    EXPECT_TRUE(outcome.isDone);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.text, "nothing\n");
  }
}

TEST(Completion, ANameWithALineBreakIsNotOffered) {
  EXPECT_EQ(textOf({{"one", "two\nlines", "three"}, Completes::nothing}), "nothing\none\nthree\n");
}

TEST(Completion, CommandsComeFirstAndOnlyThere) {
  Command launcher("git", "start programs");
  launcher.subcommand("add", "add").subcommand("apply", "apply");
  EXPECT_THAT(launcher.complete({{"a"}, 0}).words, ElementsAre("add", "apply"));
  EXPECT_THAT(launcher.complete({{"ap"}, 0}).words, ElementsAre("apply"));
  EXPECT_THAT(launcher.complete({{"--v"}, 0}).words, ElementsAre("--version"));
  EXPECT_THAT(launcher.help(), HasSubstr("\nCommands:\n  add         add\n"));
}

TEST(Completion, ACommandWithoutTheShortHelpDoesNotOfferIt) {
  Command command("quarnish", "extract");
  command.onlyLongHelp();
  EXPECT_THAT(command.complete({{"-"}, 0}).words, ElementsAre("--help", "--version"));
  EXPECT_THAT(command.help(), Not(HasSubstr("-h,")));
  EXPECT_EQ(command.parse({"-h"}).status, kWrongUsage);
}

}  // namespace
}  // namespace tool
