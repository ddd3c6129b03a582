#include "batch/run/input_list.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "support/temporary_directory.h"

namespace batch {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> pathsOf(const std::vector<BatchInput>& inputs) {
  std::vector<std::string> paths;
  for (const BatchInput& input : inputs) paths.push_back(input.path);
  return paths;
}

TEST(InputList, HasANameInEachLine) {
  EXPECT_THAT(namesIn("a\n\nb c\r\n#d\n"), ElementsAre("a", "b c", "#d"));
  EXPECT_THAT(namesIn("a\nb"), ElementsAre("a", "b"));
  EXPECT_TRUE(namesIn("").empty());
  EXPECT_TRUE(namesIn("\n\r\n").empty());
}

TEST(InputList, MakesPathsAbsoluteAndPlain) {
  EXPECT_THAT(pathsOf(inputsNamed({"/a/../b/./c.odb", "/b//c.odb", "/d"})), ElementsAre("/b/c.odb", "/d"));
  EXPECT_EQ(pathsOf(inputsNamed({"job"})).front(), (std::filesystem::current_path() / "job").string());
}

TEST(InputList, ExpandsPatternsByName) {
  const TemporaryDirectory directory;
  for (const char* name : {"b.odb", "a.odb", "c.frd"}) std::ofstream(directory.file(name)).flush();
  EXPECT_THAT(pathsOf(inputsNamed({directory.file("c*"), directory.file("*.odb"), directory.file("a.odb")})),
              ElementsAre(directory.file("c.frd"), directory.file("a.odb"), directory.file("b.odb")));
  EXPECT_THROW(inputsNamed({directory.file("[xy].odb")}), InputListError);
}

TEST(InputList, RefusesDirectoriesAndLineBreaks) {
  const TemporaryDirectory directory;
  EXPECT_THROW(inputsNamed({directory.file(".")}), InputListError);
  EXPECT_THROW(inputsNamed({"a\nb"}), InputListError);
}

TEST(InputList, SlicesHaveEachInputOnce) {
  const std::vector<BatchInput> inputs = inputsNamed({"/0", "/1", "/2", "/3", "/4"});
  EXPECT_THAT(pathsOf(sliceOf(inputs, 0, 2)), ElementsAre("/0", "/2", "/4"));
  EXPECT_THAT(pathsOf(sliceOf(inputs, 1, 2)), ElementsAre("/1", "/3"));
  EXPECT_THAT(pathsOf(sliceOf(inputs, 6, 7)), ElementsAre());
  EXPECT_THAT(pathsOf(sliceOf(inputs, 0, 1)), ElementsAre("/0", "/1", "/2", "/3", "/4"));
}

}  // namespace
}  // namespace batch
