// Every way to compute CRC32C that this machine can run, against published vectors and the definition bit by bit.
#include "odbstore/crc32c.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string_view>
#include <vector>

namespace odbstore {
namespace {

using Bytes = std::vector<std::byte>;

// The definition: one bit after the other through the shift register.
std::uint32_t bitwise(std::span<const std::byte> bytes, std::uint32_t before = 0) {
  std::uint32_t sum = ~before;
  for (const std::byte byte : bytes) {
    for (int bit = 0; bit < 8; ++bit) {
      const bool feedback = ((sum ^ (static_cast<std::uint32_t>(byte) >> bit)) & 1U) != 0;
      sum = (sum >> 1U) ^ (feedback ? 0x82F63B78U : 0U);
    }
  }
  return ~sum;
}

Bytes randomBytes(std::size_t count, std::mt19937& random) {
  Bytes bytes(count);
  for (std::byte& byte : bytes) byte = static_cast<std::byte>(random());
  return bytes;
}

class Crc32cTest : public testing::TestWithParam<Crc32cVersion> {};

TEST_P(Crc32cTest, GivesThePublishedSums) {
  const auto sum = GetParam().sum;
  Bytes rising(32);
  Bytes falling(32);
  for (std::size_t i = 0; i < 32; ++i) rising[i] = falling[31 - i] = static_cast<std::byte>(i);
  EXPECT_EQ(sum(Bytes(32, std::byte{0}), 0), 0x8A9136AAU);
  EXPECT_EQ(sum(Bytes(32, std::byte{0xFF}), 0), 0x62A8AB43U);
  EXPECT_EQ(sum(rising, 0), 0x46DD794EU);
  EXPECT_EQ(sum(falling, 0), 0x113FDB5CU);
  EXPECT_EQ(sum(std::as_bytes(std::span(std::string_view("123456789"))), 0), 0xE3069283U);
}

TEST_P(Crc32cTest, GivesZeroOfNothing) { EXPECT_EQ(GetParam().sum({}, 0), 0U); }

TEST_P(Crc32cTest, AgreesWithTheDefinitionForEveryShortLengthAndAlignment) {
  std::mt19937 random(1);
  const Bytes bytes = randomBytes(96, random);
  for (std::size_t offset = 0; offset < 9; ++offset) {
    for (std::size_t length = 0; offset + length <= bytes.size(); ++length) {
      const std::span part = std::span(bytes).subspan(offset, length);
      ASSERT_EQ(GetParam().sum(part, 0), bitwise(part)) << offset << ' ' << length;
    }
  }
}

TEST_P(Crc32cTest, AgreesWithTheDefinitionAroundTheLengthsThatAreSummedSideBySide) {
  std::mt19937 random(2);
  const Bytes bytes = randomBytes(3 * 4080 + 64, random);
  for (const std::size_t base : {256U, 512U, 768U, 1360U, 2720U, 4080U, 4096U, 8160U, 12240U}) {
    for (std::size_t length = base - 17; length <= base + 17; ++length) {
      const std::span part = std::span(bytes).subspan(random() % 8, length);
      ASSERT_EQ(GetParam().sum(part, 0), bitwise(part)) << length;
    }
  }
}

TEST_P(Crc32cTest, ContinuesASumFromAnyPlace) {
  std::mt19937 random(3);
  for (int i = 0; i < 200; ++i) {
    const Bytes bytes = randomBytes(random() % 10000, random);
    const std::size_t cut = random() % (bytes.size() + 1);
    const std::uint32_t first = GetParam().sum(std::span(bytes).first(cut), 0);
    ASSERT_EQ(GetParam().sum(std::span(bytes).subspan(cut), first), bitwise(bytes)) << bytes.size() << ' ' << cut;
  }
}

INSTANTIATE_TEST_SUITE_P(Versions, Crc32cTest, testing::ValuesIn(crc32cVersions().begin(), crc32cVersions().end()),
                         [](const auto& version) {
                           std::string name = version.param.name;
                           std::erase(name, '.');
                           return name;
                         });

TEST(Crc32cTest, TheFastestVersionIsTheOneInUse) {
  std::mt19937 random(4);
  const Bytes bytes = randomBytes(5000, random);
  EXPECT_EQ(crc32c(bytes), crc32cVersions().back().sum(bytes, 0));
}

}  // namespace
}  // namespace odbstore
