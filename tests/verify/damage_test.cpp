#include "verify/damage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace verify {
namespace {

using testing::ElementsAre;

// A file of ten blocks of 4096 bytes: structure, sums, labels, and three frames of 8192 bytes, the last bytes structure
// again.
class DamageTest : public testing::Test {
 protected:
  DamageTest() {
    extents_ = {{1000, 1044, "/checksums", 0, 4},
                {4096, 8192, "/locations/0/nodeLabels", 0, 4},
                {8192, 32768, "/steps/S/fields/U/blocks/0/data", 0, 8192}};
  }

  std::vector<std::string> damage(const std::vector<std::int64_t>& blocks) const {
    return describeDamage(blocks, {1000, 10, 4096}, 40000, extents_, [this](const BlockPlace&) { return frames_; });
  }

  std::vector<odbstore::DataExtent> extents_;
  std::vector<int> frames_ = {5, 3, 8};
};

TEST_F(DamageTest, NamesTheFrameThatIsHit) {
  EXPECT_THAT(damage({2}), ElementsAre("bytes 8192..12287 are damaged: step \"S\", field \"U\", block 0, frame 5"));
  EXPECT_THAT(damage({5}), ElementsAre("bytes 20480..24575 are damaged: step \"S\", field \"U\", block 0, frame 3"));
}

TEST_F(DamageTest, TakesNeighboursTogether) {
  EXPECT_THAT(
      damage({1, 2, 3, 4, 7}),
      ElementsAre("bytes 4096..20479 are damaged: location \"0\", nodeLabels; step \"S\", field \"U\", block 0, "
                  "frames 3, 5",
                  "bytes 28672..32767 are damaged: step \"S\", field \"U\", block 0, frame 8"));
}

TEST_F(DamageTest, CallsBytesOfNoDataSetTheStructure) {
  EXPECT_THAT(damage({0}), ElementsAre("bytes 0..4095 are damaged: the structure of the file"));
  EXPECT_THAT(damage({8}), ElementsAre("bytes 32768..36863 are damaged: the structure of the file"));
}

TEST_F(DamageTest, EndsWithTheFile) {
  EXPECT_THAT(damage({9}), ElementsAre("bytes 36864..39999 are damaged: the structure of the file"));
}

TEST_F(DamageTest, DoesNotCountTheSumsAsAGap) {
  extents_[0] = {0, 4044, "/checksums", 0, 4};
  extents_.insert(extents_.begin() + 1, {4044, 4096, "/parts/P/nodeSets/N", 0, 4});
  EXPECT_THAT(describeDamage({0}, {0, 1010, 4096}, 40000, extents_, {}),
              ElementsAre("bytes 0..4095 are damaged: part \"P\", node set \"N\""));
}

TEST_F(DamageTest, LeavesFramesOutThatAreNotKnown) {
  frames_.clear();
  EXPECT_THAT(damage({2}), ElementsAre("bytes 8192..12287 are damaged: step \"S\", field \"U\", block 0"));
}

TEST_F(DamageTest, CountsWhatWouldBeTooLongAList) {
  extents_.clear();
  for (int i = 0; i < 20; ++i) {
    extents_.push_back({i * 100, i * 100 + 100, "/locations/" + std::to_string(i) + "/nodeLabels", 0, 4});
  }
  const std::vector<std::string> texts = damage({0});
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_THAT(texts[0], testing::HasSubstr("location \"11\", nodeLabels; 8 more data sets; the structure"));
}

}  // namespace
}  // namespace verify
