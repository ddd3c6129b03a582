#include "base/output_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "base/file_error.h"
#include "support/temporary_directory.h"

namespace base {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class OutputFileTest : public testing::Test {
 protected:
  void put(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

  std::string textOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // Publishes `text` under the name.
  void publish(const std::string& path, const std::string& text) {
    OutputFile file(path);
    put(file.temporaryPath(), text);
    file.publish();
  }

  // The message with which a file of that name is refused.
  std::string refusalOf(const std::string& path) {
    try {
      OutputFile file(path);
    } catch (const FileError& error) {
      return error.what();
    }
    return "no failure";
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
};

TEST_F(OutputFileTest, HasItsNameOnlyWhenItIsPublished) {
  put(path_, "older");
  {
    OutputFile file(path_);
    put(file.temporaryPath(), "newer");
    EXPECT_EQ(textOf(path_), "older");
  }
  EXPECT_EQ(textOf(path_), "older");
  EXPECT_EQ(directory_.entries(), 1U);
  publish(path_, "newer");
  EXPECT_EQ(textOf(path_), "newer");
  EXPECT_EQ(directory_.entries(), 1U);
}

TEST_F(OutputFileTest, HasTheRightsOfAnyNewFile) {
  publish(path_, "new");
  put(directory_.file("other"), "new");
  EXPECT_EQ(std::filesystem::status(path_).permissions(),
            std::filesystem::status(directory_.file("other")).permissions());
}

TEST_F(OutputFileTest, TemporaryFilesThatNobodyHoldsAreClearedAway) {
  std::string nameOfKilled;
  {
    const OutputFile killed(path_);
    nameOfKilled = killed.temporaryPath();
  }
  put(nameOfKilled, "left behind");
  publish(path_, "new");
  EXPECT_EQ(directory_.entries(), 1U);
}

TEST_F(OutputFileTest, TemporaryFilesOfWritersAtWorkStay) {
  OutputFile first(path_);
  put(first.temporaryPath(), "first");
  publish(path_, "second");
  EXPECT_EQ(textOf(path_), "second");
  first.publish();
  EXPECT_EQ(textOf(path_), "first");
  EXPECT_EQ(directory_.entries(), 1U);
}

TEST_F(OutputFileTest, FilesOfSimilarNamesStay) {
  const std::string names[] = {path_ + ".tmp.abcde", path_ + ".tmp.abcdefg", path_ + ".tmp.ab-def",
                               path_ + "xtmp.abcdef", directory_.file("other.odb.tmp.abcdef")};
  for (const std::string& name : names) put(name, "somebody's");
  std::filesystem::create_directory(path_ + ".tmp.direct");
  std::filesystem::create_symlink(names[0], path_ + ".tmp.linked");
  publish(path_, "new");
  for (const std::string& name : names) EXPECT_EQ(textOf(name), "somebody's") << name;
  EXPECT_EQ(directory_.entries(), 8U);
}

TEST_F(OutputFileTest, GoesWhereALinkPoints) {
  std::filesystem::create_directory(directory_.file("scratch"));
  std::filesystem::create_symlink("scratch/big.odb", path_);
  for (const std::string text : {"first", "second"}) {
    publish(path_, text);
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    EXPECT_EQ(textOf(directory_.file("scratch/big.odb")), text);
  }
  EXPECT_EQ(directory_.entries(), 2U);
}

TEST_F(OutputFileTest, LinksInACircleAreRefused) {
  std::filesystem::create_symlink("job.odb", path_);
  EXPECT_EQ(refusalOf(path_), path_ + ": cannot be created: its links form a circle");
}

TEST_F(OutputFileTest, WhatIsNoFileIsNotReplaced) {
  std::filesystem::create_directory(path_);
  EXPECT_EQ(refusalOf(path_), path_ + ": cannot be created: it is a directory");
  std::filesystem::remove(path_);
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(refusalOf(path_), path_ + ": cannot be created: it is not a regular file");
}

TEST_F(OutputFileTest, DirectoryThatIsNotThereIsNamed) {
  const std::string path = directory_.file("no/job.odb");
  EXPECT_THAT(refusalOf(path), StartsWith(path + ": cannot be created: "));
  EXPECT_THAT(refusalOf(path), HasSubstr("No such file or directory"));
}

}  // namespace
}  // namespace base
