#include "odbaccess/read_ahead.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace odb_detail {
namespace {

constexpr std::size_t kPieceBytes = 4096;

// Fills a piece with numbers that tell which it is.
void fill(std::size_t index, std::byte* buffer) {
  std::vector<std::size_t> numbers(kPieceBytes / sizeof(std::size_t), index);
  std::memcpy(buffer, numbers.data(), kPieceBytes);
}

bool isPiece(std::size_t index, const std::byte* buffer) {
  std::vector<std::size_t> numbers(kPieceBytes / sizeof(std::size_t));
  std::memcpy(numbers.data(), buffer, kPieceBytes);
  for (const std::size_t number : numbers) {
    if (number != index) return false;
  }
  return true;
}

TEST(ReadAheadTest, HandsOutAllPiecesInOrderRunAfterRun) {
  ReadAhead reader(kPieceBytes);
  for (const std::size_t pieces : {0U, 1U, 3U, 7U, 8U, 9U, 100U, 1000U, 5U, 64U}) {
    std::size_t next = 0;
    reader.run(pieces, fill, [&](std::size_t index, const std::byte* buffer) {
      ASSERT_EQ(index, next++);
      ASSERT_TRUE(isPiece(index, buffer));
    });
    EXPECT_EQ(next, pieces);
  }
}

TEST(ReadAheadTest, ManyShortRunsDoNotDisturbOneAnother) {
  ReadAhead reader(kPieceBytes);
  for (int run = 0; run < 2000; ++run) {
    std::size_t sum = 0;
    reader.run(12, fill, [&](std::size_t index, const std::byte*) { sum += index; });
    ASSERT_EQ(sum, 66U);
  }
}

TEST(ReadAheadTest, AFailedReadReachesTheCallerAndTheNextRunIsWhole) {
  ReadAhead reader(kPieceBytes);
  for (std::size_t bad = 0; bad < 40; ++bad) {
    const auto read = [&](std::size_t index, std::byte* buffer) {
      if (index == bad) throw std::runtime_error("piece " + std::to_string(index));
      fill(index, buffer);
    };
    std::size_t taken = 0;
    try {
      reader.run(40, read, [&](std::size_t index, const std::byte* buffer) {
        ASSERT_TRUE(isPiece(index, buffer));
        ++taken;
      });
      ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), "piece " + std::to_string(bad));
    }
    EXPECT_LE(taken, bad);
    std::size_t count = 0;
    reader.run(20, fill, [&](std::size_t, const std::byte*) { ++count; });
    EXPECT_EQ(count, 20U);
  }
}

TEST(ReadAheadTest, AFailedTakeEndsTheRunAndTheNextRunIsWhole) {
  ReadAhead reader(kPieceBytes);
  for (std::size_t bad = 0; bad < 40; ++bad) {
    const auto take = [&](std::size_t index, const std::byte*) {
      if (index == bad) throw std::runtime_error("enough");
    };
    EXPECT_THROW(reader.run(40, fill, take), std::runtime_error);
    std::size_t count = 0;
    reader.run(20, fill, [&](std::size_t, const std::byte*) { ++count; });
    EXPECT_EQ(count, 20U);
  }
}

}  // namespace
}  // namespace odb_detail
