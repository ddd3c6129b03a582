// Chunks that HDF5 has packed, unpacked without it, and the other way round; and chunks that are not as they should be.
#include "odbstore/unpack.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <random>

#include "hdf5/file.h"
#include "support/temporary_directory.h"

namespace odbstore {
namespace {

using Bytes = std::vector<std::byte>;

struct Pipeline {
  Packing packing;
  std::vector<h5::Filter> filters;
};

const std::vector<Pipeline> kPipelines = {{Packing::gzip, {h5::Filter::gzip}},
                                          {Packing::fletcher32, {h5::Filter::fletcher32}},
                                          {Packing::gzipFletcher32, {h5::Filter::gzip, h5::Filter::fletcher32}},
                                          {Packing::fletcher32Gzip, {h5::Filter::fletcher32, h5::Filter::gzip}}};

Bytes numbersOf(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  Bytes bytes(count);
  for (std::byte& byte : bytes) byte = static_cast<std::byte>(random() % 3 == 0 ? random() : 0);
  return bytes;
}

Bytes deflated(const Bytes& bytes) {
  uLongf size = compressBound(bytes.size());
  Bytes out(size);
  compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
  out.resize(size);
  return out;
}

class UnpackTest : public testing::Test {
 protected:
  // A slab as HDF5 stores it.
  Bytes packedByHdf5(const Bytes& slab, const std::vector<h5::Filter>& filters) {
    const h5::Group root = h5::createFile(directory_.file("chunks.h5"), "chunks.h5", 4096);
    h5::Storage storage;
    storage.filters = filters;
    const h5::Dataset dataset = root.createDataset("data", base::NumberFormat::uint8, {1, slab.size()}, storage);
    dataset.write(slab.data(), base::NumberFormat::uint8);
    const hsize_t first[2] = {0, 0};
    hsize_t size = 0;
    std::uint32_t mask = 0;
    EXPECT_GE(H5Dget_chunk_storage_size(dataset.id(), first, &size), 0);
    Bytes stored(size);
    EXPECT_GE(H5Dread_chunk(dataset.id(), H5P_DEFAULT, first, &mask, stored.data()), 0);
    return stored;
  }

  // A slab that HDF5 reads out of a chunk of ours.
  Bytes unpackedByHdf5(const Bytes& stored, std::size_t size, const std::vector<h5::Filter>& filters) {
    const std::string path = directory_.file("chunks.h5");
    {
      const h5::Group root = h5::createFile(path, path, 4096);
      h5::Storage storage;
      storage.filters = filters;
      root.createDataset("data", base::NumberFormat::uint8, {1, size}, storage).writeChunk(0, stored);
    }
    Bytes out(size);
    const h5::Handle file(H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT), H5Fclose);
    const h5::Handle data(H5Dopen2(file.get(), "data", H5P_DEFAULT), H5Dclose);
    EXPECT_GE(H5Dread(data.get(), H5T_NATIVE_UINT8, H5S_ALL, H5S_ALL, H5P_DEFAULT, out.data()), 0);
    return out;
  }

  TemporaryDirectory directory_;
};

TEST_F(UnpackTest, UnpacksWhatHdf5HasPacked) {
  for (const Pipeline& pipeline : kPipelines) {
    for (const std::size_t size : {1UL, 2UL, 7UL, 719UL, 720UL, 721UL, 100'000UL}) {
      const Bytes slab = numbersOf(size, 5);
      Bytes out(size);
      EXPECT_EQ(unpack(packedByHdf5(slab, pipeline.filters), pipeline.packing, out), nullptr);
      EXPECT_EQ(out, slab) << size;
    }
  }
}

TEST_F(UnpackTest, PacksAsHdf5Unpacks) {
  for (const Pipeline& pipeline : kPipelines) {
    for (const std::size_t size : {1UL, 721UL, 100'000UL}) {
      const Bytes slab = numbersOf(size, 6);
      Bytes stored;
      pack(slab, pipeline.packing, stored);
      EXPECT_EQ(unpackedByHdf5(stored, size, pipeline.filters), slab);
    }
  }
}

TEST_F(UnpackTest, WhatIsLongerOrShorterThanTheSlabIsRefused) {
  const Bytes slab = numbersOf(1000, 7);
  for (const Pipeline& pipeline : kPipelines) {
    Bytes stored;
    pack(slab, pipeline.packing, stored);
    for (const std::size_t room : {999UL, 1001UL, 1UL, 4000UL}) {
      Bytes out(room + 16, std::byte{0x55});
      EXPECT_NE(unpack(stored, pipeline.packing, std::span(out).first(room)), nullptr) << room;
      for (std::size_t i = room; i < out.size(); ++i) EXPECT_EQ(out[i], std::byte{0x55}) << "written behind the slab";
    }
  }
}

TEST_F(UnpackTest, DamageIsSeen) {
  const Bytes slab = numbersOf(1000, 8);
  for (const Pipeline& pipeline : kPipelines) {
    Bytes stored;
    pack(slab, pipeline.packing, stored);
    Bytes out(slab.size());
    for (std::size_t i = 0; i < stored.size(); ++i) {
      Bytes damaged = stored;
      damaged[i] ^= std::byte{4};
      // Some bits of a packed stream mean nothing.
      const bool isTaken = unpack(damaged, pipeline.packing, out) == nullptr;
      EXPECT_TRUE(!isTaken || out == slab) << i;
    }
    for (const std::size_t cut : {0UL, 1UL, 3UL, stored.size() / 2, stored.size() - 1}) {
      EXPECT_NE(unpack(std::span(stored).first(cut), pipeline.packing, out), nullptr) << cut;
    }
  }
}

TEST_F(UnpackTest, WhatFollowsThePackedNumbersIsRefused) {
  const Bytes slab = numbersOf(1000, 9);
  Bytes stored = deflated(slab);
  stored.push_back(std::byte{0});
  Bytes out(slab.size());
  EXPECT_STREQ(unpack(stored, Packing::gzip, out), "something follows the packed numbers");
}

TEST_F(UnpackTest, ABombIsLeftAtTheFirstByteTooMany) {
  const Bytes bomb = deflated(Bytes(std::size_t{200} << 20U));
  Bytes out(1000);
  EXPECT_STREQ(unpack(bomb, Packing::gzip, out), "there are more packed numbers than the frame has");
}

}  // namespace
}  // namespace odbstore
