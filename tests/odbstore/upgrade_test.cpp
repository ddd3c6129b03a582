// What the parent of an upgrade looks at before it gives the file its name.
#include "odbstore/upgrade.h"

#include <gmock/gmock.h>
#include <hdf5.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/output_file.h"
#include "odbstore/reader.h"
#include "odbstore/store_error.h"
#include "odbwriter/database_writer.h"
#include "support/old_database.h"
#include "support/temporary_directory.h"

namespace odbstore {
namespace {

// Its bytes are the letters NODE.
constexpr int kNodeLabel = 0x45444f4e;

class RequireCompleteTest : public testing::Test {
 protected:
  void writeDatabase() {
    DatabaseWriter writer(file_.temporaryPath(), path_, {});
    writer.addPart("PLATE");
    writer.addInstance("PLATE-1", "PLATE");
    writer.addNodes("PLATE-1", {1, kNodeLabel}, {0.0, 0.0, 0.0, 1.0, 0.0, 0.0});
    writer.finish();
  }

  std::string failure() {
    try {
      requireComplete(file_);
    } catch (const StoreError& error) {
      return error.what();
    }
    return "none";
  }

  TemporaryDirectory directory_;
  const std::string path_ = directory_.file("new.odb");
  const std::string incomplete_ = path_ + ": cannot be read back as it was written";
  base::OutputFile file_{path_};
};

TEST_F(RequireCompleteTest, FinishedFileIsCompleteAndHasNoNameYet) {
  writeDatabase();
  EXPECT_EQ(failure(), "none");
  EXPECT_FALSE(std::filesystem::exists(path_));
  EXPECT_EQ(directory_.entries(), 1U);
}

TEST_F(RequireCompleteTest, EmptyFileIsNot) { EXPECT_EQ(failure(), incomplete_); }

TEST_F(RequireCompleteTest, FileOfAWriterThatDidNotFinishIsNot) {
  {
    DatabaseWriter writer(file_.temporaryPath(), path_, {});
    writer.addPart("PLATE");
    writer.layOut();
  }
  EXPECT_EQ(failure(), incomplete_);
  EXPECT_TRUE(std::filesystem::exists(file_.temporaryPath())) << "it belongs to whoever made it";
}

TEST_F(RequireCompleteTest, CutFileIsNot) {
  writeDatabase();
  std::filesystem::resize_file(file_.temporaryPath(), std::filesystem::file_size(file_.temporaryPath()) - 1);
  EXPECT_EQ(failure(), incomplete_);
}

TEST_F(RequireCompleteTest, FileWithAChangedNumberIsNot) {
  writeDatabase();
  std::fstream stream(file_.temporaryPath(), std::ios::in | std::ios::out | std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  const std::size_t label = bytes.find("NODE");
  ASSERT_NE(label, std::string::npos);
  stream.seekp(static_cast<std::streamoff>(label));
  stream.put('M').flush();
  EXPECT_EQ(failure(), incomplete_);
  stream.seekp(static_cast<std::streamoff>(label));
  stream.put('N').flush();
  EXPECT_EQ(failure(), "none");
}

TEST_F(RequireCompleteTest, FileOfAnotherLayoutIsNot) {
  writeDatabase();
  const hid_t file = H5Fopen(file_.temporaryPath().c_str(), H5F_ACC_RDWR, H5P_DEFAULT);
  const hid_t layout = H5Aopen(file, "layout", H5P_DEFAULT);
  const int one = 1;
  EXPECT_GE(H5Awrite(layout, H5T_NATIVE_INT, &one), 0);
  H5Aclose(layout);
  H5Fclose(file);
  EXPECT_EQ(failure(), incomplete_);
}

TEST_F(RequireCompleteTest, FileWithoutACatalogIsNot) {
  writeDatabase();
  const hid_t file = H5Fopen(file_.temporaryPath().c_str(), H5F_ACC_RDWR, H5P_DEFAULT);
  EXPECT_GE(H5Ldelete(file, "catalog", H5P_DEFAULT), 0);
  H5Fclose(file);
  EXPECT_EQ(failure(), incomplete_);
}

TEST(Upgrade, HandsOutWhatItHasWrittenWhateverTakesTheNameMeanwhile) {
  const TemporaryDirectory directory;
  const std::string copy = directory.file("copy.odb");
  writeOldDatabase(directory.file("first.odb"), "first");
  writeOldDatabase(directory.file("second.odb"), "second");
  const auto first = upgrade(directory.file("first.odb"), copy);
  const auto second = upgrade(directory.file("second.odb"), copy);
  EXPECT_EQ(first->name(), "first");
  EXPECT_EQ(second->name(), "second");
  EXPECT_EQ(Reader(copy).name(), "second");
}

}  // namespace
}  // namespace odbstore
