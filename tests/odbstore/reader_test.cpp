// What the reader says of its own misuse, and of files that change behind its back. What files must not be in the first
// place is in tests/verify.
#include "odbstore/reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "odbwriter/database_writer.h"
#include "results_for_writers.h"
#include "support/temporary_directory.h"

namespace odbstore {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ReaderTest : public testing::Test {
 protected:
  ReaderTest() {
    DatabaseWriter writer(path_);
    const auto all = writer.addLocation({"I", Position::nodal, "", 0, ""}, {std::vector<int>(20000, 1), {}, {}});
    const auto none = writer.addLocation({"I", Position::nodal, "", 0, ""}, {});
    const auto step = writer.addStep("Step-1", {});
    for (int i = 0; i < 3; ++i) writer.addFrame(step, {i, 0, ""});
    const auto field = writer.addField(step, "NT", {"", 2, {}, {}, false});
    writer.addBlock(field, none, {.isDouble = true});
    const auto block = writer.addBlock(field, all, {.frames = std::vector<int>{0, 2}});
    for (const int frame : {0, 2}) writer.writeRows(block, frame, std::vector<float>(20000, 1.5F));
    writer.finish();
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
};

TEST_F(ReaderTest, ASetThatDoesNotExistIsNamed) {
  const Reader reader(path_);
  EXPECT_THAT(failureOf([&] { reader.setMembers({}, SetKind::node, "TIP"); }), HasSubstr("there is no set \"TIP\""));
}

TEST_F(ReaderTest, ABlockKnowsItsFrames) {
  const auto step = Reader(path_).step("Step-1");
  const std::vector<StoredBlock>& blocks = step->fields().at(0).blocks;
  EXPECT_THAT(blocks.at(0).frames(), ElementsAre(0, 1, 2));
  EXPECT_THAT(blocks.at(1).frames(), ElementsAre(0, 2));
}

TEST_F(ReaderTest, NothingIsReadOfABlockWithoutRows) {
  const auto step = Reader(path_).step("Step-1");
  const StoredBlock& empty = step->fields().at(0).blocks.at(0);
  EXPECT_EQ(empty.rows(), 0);
  double number = 7;
  float narrow = 7;
  empty.read(1, &number);
  empty.read(1, &narrow);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(narrow, 7);
}

TEST_F(ReaderTest, AFileThatIsCutOffWhileItIsOpenIsAnError) {
  const auto step = Reader(path_).step("Step-1");
  const StoredBlock& block = step->fields().at(0).blocks.at(1);
  std::filesystem::resize_file(path_, 4096);
  std::vector<float> rows(20000);
  EXPECT_THAT(failureOf([&] { block.read(2, rows.data()); }),
              HasSubstr("/steps/Step-1/fields/NT/blocks/1/data: the file ends inside this data set"));
}

}  // namespace
}  // namespace odbstore
