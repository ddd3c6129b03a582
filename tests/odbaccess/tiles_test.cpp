// Blocks that are handed out in tiles, against the same blocks handed out whole.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <random>

#include "odbaccess/odb_api.h"
#include "odbwriter/database_writer.h"
#include "support/temporary_directory.h"

namespace {

using odbstore::Position;

// More rows than the pieces in which a file is read, and few enough for one.
constexpr int kManyRows = 200'003;
constexpr int kFewRows = 50;

class TilesTest : public testing::Test {
 protected:
  template <class Number>
  static std::vector<Number> numbers(std::size_t count) {
    std::mt19937 random(7);
    std::normal_distribution<Number> usual(0, 100);
    std::vector<Number> drawn(count);
    for (Number& number : drawn) number = usual(random);
    return drawn;
  }

  // A field "F" of one block in one frame, at element rows.
  template <class Number>
  odb_FieldBulkData blockOf(int rows, int type, const std::vector<std::string>& labels, bool engineeringShear = false,
                            bool compressed = false) {
    odbstore::DatabaseWriter writer(path_, {compressed, false});
    writer.addPart("P");
    writer.addInstance("P-1", "P");
    const auto step = writer.addStep("Step-1", {});
    std::vector<int> elements(static_cast<std::size_t>(rows));
    for (std::size_t i = 0; i < elements.size(); ++i) elements[i] = static_cast<int>(i / 8) + 1;
    const auto place = writer.addLocation({"P-1", Position::centroid, "C3D8", 0, ""}, {{}, elements, {}});
    const int frame = writer.addFrame(step, {1, 0, "Increment"});
    const auto field = writer.addField(step, "F", {"Stress", type, labels, {}, engineeringShear});
    const auto block = writer.addBlock(
        field, place, {.width = static_cast<int>(labels.size()), .isDouble = std::is_same_v<Number, double>});
    writer.writeRows(block, frame, numbers<Number>(elements.size() * labels.size()));
    writer.finish();
    odb_ = &openOdb(path_.c_str(), true, false);
    const odb_FieldOutput output = odb_->steps()["Step-1"].frames().constGet(0).fieldOutputs().get("F");
    return output.bulkDataBlocks().constGet(0);
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
  odb_Odb* odb_ = nullptr;
};

// Puts the tiles together again and compares them with the whole, and the equivalent stress with mises().
template <class Number>
void expectTilesOf(const odb_FieldBulkData& block, int leastTiles) {
  std::vector<Number> rows;
  std::vector<float> mises;
  float max = -std::numeric_limits<float>::infinity();
  float min = std::numeric_limits<float>::infinity();
  int tiles = 0;
  block.forEachTile([&](const odb_FieldBulkTile& tile) {
    ASSERT_EQ(tile.first() * block.width(), static_cast<int>(rows.size()));
    const Number* numbers = nullptr;
    if constexpr (std::is_same_v<Number, float>) {
      numbers = tile.data();
      EXPECT_EQ(tile.dataDouble(), nullptr);
    } else {
      numbers = tile.dataDouble();
      EXPECT_EQ(tile.data(), nullptr);
    }
    rows.insert(rows.end(), numbers, numbers + tile.count() * block.width());
    mises.resize(mises.size() + static_cast<std::size_t>(tile.count()));
    tile.mises(mises.data() + tile.first());
    tile.takeMises(max, min);
    ++tiles;
  });
  EXPECT_GE(tiles, leastTiles);
  const Number* whole = nullptr;
  if constexpr (std::is_same_v<Number, float>) {
    whole = block.data();
  } else {
    whole = block.dataDouble();
  }
  ASSERT_EQ(rows, std::vector<Number>(whole, whole + block.valueCount() * block.width()));
  const std::vector<float> expected(block.mises(), block.mises() + block.valueCount());
  ASSERT_EQ(mises, expected);
  EXPECT_EQ(max, *std::max_element(expected.begin(), expected.end()));
  EXPECT_EQ(min, *std::min_element(expected.begin(), expected.end()));
}

const std::vector<std::string> kSix = {"S11", "S22", "S33", "S12", "S13", "S23"};

TEST_F(TilesTest, TheTilesOfALargeBlockAreItsRows) { expectTilesOf<float>(blockOf<float>(kManyRows, 5, kSix), 2); }

TEST_F(TilesTest, ASmallBlockIsOneTile) { expectTilesOf<float>(blockOf<float>(kFewRows, 5, kSix), 1); }

TEST_F(TilesTest, DoublesComeInDouble) { expectTilesOf<double>(blockOf<double>(kManyRows, 5, kSix), 2); }

TEST_F(TilesTest, ComponentsStandInTheirPlaces) {
  // 33 and 13 are not stored, and 12 comes first.
  expectTilesOf<float>(blockOf<float>(kManyRows, 5, {"S12", "S22", "S11", "S23"}), 2);
  std::filesystem::remove(path_);
  expectTilesOf<double>(blockOf<double>(kManyRows, 7, {"S12", "S11"}), 2);
}

TEST_F(TilesTest, EngineeringShearsAreHalvedInTheEquivalentStress) {
  expectTilesOf<float>(blockOf<float>(kManyRows, 5, kSix, true), 2);
  std::filesystem::remove(path_);
  expectTilesOf<double>(blockOf<double>(kFewRows, 5, kSix, true), 1);
}

TEST_F(TilesTest, APackedBlockIsOneTile) { expectTilesOf<float>(blockOf<float>(kManyRows, 5, kSix, false, true), 1); }

TEST_F(TilesTest, AFileThatEndsInsideABlockIsAnErrorThatNamesIt) {
  const odb_FieldBulkData block = blockOf<float>(kManyRows, 5, kSix);
  std::filesystem::resize_file(path_, std::filesystem::file_size(path_) / 2);
  try {
    block.forEachTile([](const odb_FieldBulkTile&) {});
    FAIL() << "no exception";
  } catch (const odb_Exception& error) {
    EXPECT_NE(std::string(error.UserReport().cStr()).find("/blocks/0/data: the file ends inside this data set"),
              std::string::npos)
        << error.UserReport().cStr();
  }
}

}  // namespace
