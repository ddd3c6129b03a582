#include "driver/command_line.h"

#include <fstream>
#include <string>
#include <vector>

#include "support/temporary_directory.h"
#include "walk_test.h"

namespace {

constexpr const char* kUsageStart = " Program to open an output database";

class CommandLineTest : public WalkTest {
 protected:
  CommandLineTest() {
    for (const char* name : {"model.odb", "other.odb", "config.txt", "other.txt"}) std::ofstream(path(name)) << "x";
  }

  std::string path(const std::string& name) const { return directory_.file(name); }

  static CommandLine read(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    return readCommandLine(static_cast<int>(argv.size()), argv.data());
  }
  static bool asks(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    return asksForRun(static_cast<int>(argv.size()), argv.data());
  }
  // Ends the process as read() should, its standard output made visible beside its standard error.
  static void readWithOutputAsError(std::vector<std::string> arguments) {
    std::cout.rdbuf(std::cerr.rdbuf());
    read(std::move(arguments));
  }

  TemporaryDirectory directory_;
};

TEST_F(CommandLineTest, OptionsAreTakenWithTheirValues) {
  const CommandLine line = read({"quarnish", "-odb", path("model"), "-config", path("config.txt"), "-elset", "A SET"});
  EXPECT_EQ(line.database.cStr(), path("model.odb"));
  EXPECT_EQ(line.configuration.cStr(), path("config.txt"));
  EXPECT_TRUE(line.elementSetGiven);
  EXPECT_STREQ(line.elementSet.cStr(), "A SET");
}

TEST_F(CommandLineTest, OnlyTwoCharactersOfAnOptionCountAndOtherArgumentsAreIgnored) {
  const CommandLine line = read({"-", "--odb", "o", "-x", "-oops", path("model"), "stray", "-c", path("config.txt")});
  EXPECT_EQ(line.database.cStr(), path("model.odb"));
  EXPECT_EQ(line.configuration.cStr(), path("config.txt"));
  EXPECT_FALSE(line.elementSetGiven);
}

TEST_F(CommandLineTest, TheFirstArgumentIsExaminedLikeAnyOther) {
  const CommandLine line = read({"-o", path("model.odb"), "-c", path("config.txt")});
  EXPECT_EQ(line.database.cStr(), path("model.odb"));
}

TEST_F(CommandLineTest, ALaterOptionReplacesAnEarlierOne) {
  const CommandLine line = read({"-o", path("model"), "-c", path("config.txt"), "-e", "A", "-o", path("other"), "-c",
                                 path("other.txt"), "-e", "B"});
  EXPECT_EQ(line.database.cStr(), path("other.odb"));
  EXPECT_EQ(line.configuration.cStr(), path("other.txt"));
  EXPECT_STREQ(line.elementSet.cStr(), "B");
}

TEST_F(CommandLineTest, AnOptionTakesTheNextArgumentWhateverItLooksLike) {
  const CommandLine line = read({"-o", path("model"), "-c", path("config.txt"), "-e", "-help"});
  EXPECT_STREQ(line.elementSet.cStr(), "-help");
}

TEST_F(CommandLineTest, ARunIsAskedForWhateverFilesThereAre) {
  EXPECT_TRUE(asks({"quarnish", "-odb", path("model"), "-config", path("config.txt")}));
  EXPECT_TRUE(asks({"-oops", "no file", "stray", "-canary", "none either"}));
  EXPECT_TRUE(asks({"-e", "-help", "-c", "-help", "-o", "-c"}));
  EXPECT_TRUE(asks({"-o", "", "-c", ""}));
}

TEST_F(CommandLineTest, NoRunIsAskedForByHelpOrWrongUsage) {
  EXPECT_FALSE(asks({}));
  EXPECT_FALSE(asks({"quarnish"}));
  EXPECT_FALSE(asks({"-o", "a"}));
  EXPECT_FALSE(asks({"-c", "a"}));
  EXPECT_FALSE(asks({"-o", "-c", "a"}));
  EXPECT_FALSE(asks({"-o", "a", "-c", "b", "-h"}));
  EXPECT_FALSE(asks({"-help", "-o", "a", "-c", "b"}));
  EXPECT_FALSE(asks({"-o", "a", "-c", "b", "-e"}));
  EXPECT_FALSE(asks({"-o", "a", "-c"}));
  EXPECT_FALSE(asks({"-o", "a", "-c", "b", "-o"}));
}

using CommandLineDeathTest = CommandLineTest;

TEST_F(CommandLineDeathTest, AMissingFileEndsTheProcessBeforeLaterArgumentsAreSeen) {
  EXPECT_EXIT(read({"-o", path("none"), "-h"}), testing::ExitedWithCode(1),
              "\\*\\*ERROR\\*\\* output database  .*none\\.odb does not exist\n\n");
  EXPECT_EXIT(read({"-c", path("none"), "-o", path("none")}), testing::ExitedWithCode(1),
              "\\*\\*ERROR\\*\\* configuration file .*none does not exist\n\n");
}

TEST_F(CommandLineDeathTest, HelpPrintsTheUsageAndLooksNoFurther) {
  EXPECT_EXIT(readWithOutputAsError({"-o", path("model"), "-help", "-o", path("none")}), testing::ExitedWithCode(0),
              std::string("^") + kUsageStart);
}

TEST_F(CommandLineDeathTest, MissingOptionsAreNamedBeforeTheUsage) {
  EXPECT_EXIT(readWithOutputAsError({}), testing::ExitedWithCode(1),
              std::string("^\\*\\*ERROR\\*\\* output database name is not provided\n") + kUsageStart);
  EXPECT_EXIT(readWithOutputAsError({"-o", path("model")}), testing::ExitedWithCode(1),
              std::string("^\\*\\*ERROR\\*\\* configuration file name is not provided\n") + kUsageStart);
}

TEST_F(CommandLineDeathTest, AnOptionWithoutItsValueIsNamedBeforeTheUsage) {
  for (const char* option : {"-odb", "-config", "-elset"}) {
    EXPECT_EXIT(readWithOutputAsError({option}), testing::ExitedWithCode(1),
                std::string("^\\*\\*ERROR\\*\\* option ") + option + " needs a value\n" + kUsageStart);
  }
}

TEST(DatabaseName, IsCompletedUnlessItContainsTheEnding) {
  EXPECT_STREQ(completedDatabaseName("model").cStr(), "model.odb");
  EXPECT_STREQ(completedDatabaseName("model.odb").cStr(), "model.odb");
  EXPECT_STREQ(completedDatabaseName("model.odb.old").cStr(), "model.odb.old");
  EXPECT_STREQ(completedDatabaseName("a.odb/model").cStr(), "a.odb/model");
  EXPECT_STREQ(completedDatabaseName("").cStr(), ".odb");
}

}  // namespace
