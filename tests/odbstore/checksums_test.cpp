#include "odbstore/checksums.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "hdf5/file.h"
#include "odbstore/crc32c.h"
#include "odbstore/open_database.h"
#include "odbstore/store_error.h"
#include "odbstore/writer.h"
#include "support/temporary_directory.h"

namespace odbstore {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ChecksumsTest : public testing::Test {
 protected:
  void write(std::size_t rows, int frames, WriterOptions options = {}) {
    Writer writer(path_, options);
    std::vector<int> labels(rows);
    for (std::size_t i = 0; i < rows; ++i) labels[i] = static_cast<int>(i) + 1;
    const LocationId location = writer.addLocation({"I", Position::nodal, "", 0, ""}, {labels, {}, {}});
    const StepId step = writer.addStep("Step-1", {});
    for (int i = 0; i < frames; ++i) {
      std::vector<float> values(rows);
      for (std::size_t k = 0; k < rows; ++k) values[k] = static_cast<float>(k * 7919 % 1009) + static_cast<float>(i);
      writer.addBlock(writer.addField(writer.addFrame(step, {i, 0.1 * i, ""}), "NT", {"", 2, {}, {}, false}), location,
                      values);
    }
    writer.finish();
  }

  std::optional<ChecksumPlace> place() const {
    int layout = 0;
    return findChecksums(openDatabase(path_, layout));
  }

  ChecksumReport compare() const { return compareChecksums(path_, *place()); }

  std::vector<char> content() const {
    std::ifstream in(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  void flip(std::int64_t offset) const {
    std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
    file.seekg(offset);
    const int byte = file.get();
    file.seekp(offset);
    file.put(static_cast<char>(byte ^ 0x10));
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
};

TEST_F(ChecksumsTest, AreThoseOfTheBlocksWithTheirOwnBytesAsZeros) {
  write(3000, 2);
  const ChecksumPlace place = this->place().value();
  EXPECT_EQ(place.blockSize, 4096);
  std::vector<char> bytes = content();
  const auto own = static_cast<std::size_t>(place.offset);
  const auto blocks = static_cast<std::size_t>(place.blocks);
  std::vector<std::uint32_t> stored(blocks + 1);
  std::memcpy(stored.data(), bytes.data() + own, 4 * stored.size());
  EXPECT_EQ(stored.back(), crc32c(std::as_bytes(std::span(stored).first(blocks))));

  std::fill_n(bytes.begin() + place.offset, 4 * stored.size(), '\0');
  ASSERT_GE(blocks * 4096, bytes.size());
  for (std::size_t i = 0; i < blocks; ++i) {
    const std::size_t first = std::min(bytes.size(), i * 4096);
    const std::size_t count = std::min<std::size_t>(4096, bytes.size() - first);
    EXPECT_EQ(stored[i], crc32c(std::as_bytes(std::span(bytes).subspan(first, count)))) << i;
  }
}

TEST_F(ChecksumsTest, FindNothingInASoundFile) {
  for (const WriterOptions options : {WriterOptions{}, WriterOptions{true, false}, WriterOptions{true, true}}) {
    write(500, 3, options);
    const ChecksumReport report = compare();
    EXPECT_FALSE(report.tableIsDamaged);
    EXPECT_THAT(report.damagedBlocks, IsEmpty());
  }
}

TEST_F(ChecksumsTest, FindEveryFlippedByte) {
  write(1100, 2);
  const ChecksumPlace place = this->place().value();
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path_));
  for (std::int64_t at = 0; at < size; ++at) {
    flip(at);
    const ChecksumReport report = compareChecksums(path_, place);
    if (at >= place.offset && at < place.offset + 4 * (place.blocks + 1)) {
      ASSERT_TRUE(report.tableIsDamaged) << at;
    } else {
      ASSERT_FALSE(report.tableIsDamaged) << at;
      ASSERT_THAT(report.damagedBlocks, ElementsAre(at / 4096)) << at;
    }
    flip(at);
  }
  EXPECT_THAT(compare().damagedBlocks, IsEmpty());
}

TEST_F(ChecksumsTest, TakeBlocksOfAMebibyteInALargeFile) {
  write(std::size_t{36} << 20U, 2);  // 144 MiB of labels, 288 MiB of rows
  const ChecksumPlace place = this->place().value();
  EXPECT_EQ(place.blockSize, 1 << 20);
  flip(200 << 20);
  const ChecksumReport report = compareChecksums(path_, place);
  EXPECT_THAT(report.damagedBlocks, ElementsAre(200));
}

TEST_F(ChecksumsTest, AreAbsentFromAFileThatHasNone) {
  {
    const h5::Group root = h5::createFile(path_, path_);
    root.writeInt("layout", 2);
  }
  EXPECT_FALSE(place().has_value());
}

// Tables that cannot be one, each with what is said of it.
struct BadTable {
  hid_t type;
  h5::Dims dims;
  h5::Storage storage;
  int blockSize;
  const char* algorithm;
  const char* reason;
};

class BadChecksumsTest : public ChecksumsTest, public testing::WithParamInterface<int> {};

TEST_P(BadChecksumsTest, AreNamed) {
  h5::startHdf5();
  const std::vector<BadTable> tables = {
      {H5T_STD_U32LE, {17}, {.reserved = true}, 4096, "md5", "the algorithm \"md5\" is not known"},
      {H5T_STD_U32LE, {17}, {.reserved = true}, 2048, "crc32c", "the block size 2048 is no power of two from 4096"},
      {H5T_STD_U32LE, {17}, {.reserved = true}, 2097152, "crc32c", "the block size 2097152 is no power of two"},
      {H5T_STD_U32LE, {17}, {.reserved = true}, 12288, "crc32c", "the block size 12288 is no power of two"},
      {H5T_STD_U32LE, {17, 1}, {.reserved = true}, 4096, "crc32c", "must be unsigned 32-bit integers in one row"},
      {H5T_STD_I32LE, {17}, {.reserved = true}, 4096, "crc32c", "must be unsigned 32-bit integers in one row"},
      {H5T_STD_U32LE, {17}, {.gzip = true}, 4096, "crc32c", "must be unsigned 32-bit integers in one row"},
      {H5T_STD_U32LE, {1}, {.reserved = true}, 4096, "crc32c", "holds the sums of 0 blocks, the file has 1"},
  };
  const BadTable& bad = tables.at(static_cast<std::size_t>(GetParam()));
  {
    const h5::Group root = h5::createFile(path_, path_);
    root.writeInt("layout", 2);
    const h5::Dataset table = root.createDataset("checksums", bad.type, bad.dims, bad.storage);
    table.writeInt("blockSize", bad.blockSize);
    table.writeString("algorithm", bad.algorithm);
  }
  try {
    place();
    FAIL() << "taken";
  } catch (const StoreError& error) {
    EXPECT_THAT(error.what(), HasSubstr(std::string("job.odb: /checksums: ") + bad.reason));
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, BadChecksumsTest, testing::Range(0, 8));

TEST_F(ChecksumsTest, AFileThatIsGoneIsNamed) {
  try {
    compareChecksums(directory_.file("none.odb"), {0, 1, 4096});
    FAIL() << "read";
  } catch (const StoreError& error) {
    EXPECT_THAT(error.what(), HasSubstr("none.odb: cannot be opened: No such file or directory"));
  }
}

TEST_F(ChecksumsTest, WhatCannotBeReadIsNamed) {
  try {
    compareChecksums(directory_.file(""), {0, 1, 4096});
    FAIL() << "read";
  } catch (const StoreError& error) {
    EXPECT_THAT(error.what(), HasSubstr("cannot be read at byte 0: Is a directory"));
  }
}

TEST_F(ChecksumsTest, AFileThatOutgrowsItsSumsIsRefused) {
  write(3000, 1);
  ChecksumPlace place = this->place().value();
  place.blocks = 2;
  try {
    fillChecksums(path_, "job.odb", place);
    FAIL() << "filled";
  } catch (const StoreError& error) {
    EXPECT_THAT(error.what(), HasSubstr("job.odb: has grown beyond its checksums"));
  }
}

TEST_F(ChecksumsTest, AFileThatEndsBeforeItsSumsIsNamed) {
  std::ofstream(path_) << "short";
  EXPECT_THROW(compareChecksums(path_, {100, 1, 4096}), StoreError);
}

}  // namespace
}  // namespace odbstore
