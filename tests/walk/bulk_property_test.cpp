// The reduction of blocks of every kind against the plain loops.
#include <bit>
#include <cstdint>

#include "plain_bulk_reduction.h"
#include "reduce/reduce_bulk_block.h"
#include "support/drawn_numbers.h"
#include "walk_test.h"

namespace {

class BulkPropertyTest : public WalkTest, protected DrawnNumbers {
 protected:
  BulkPropertyTest() : DrawnNumbers(20261121) {}

  memory::Block block() {
    drawKinds();
    constexpr int kTypes[] = {2, 3, 5, 6, 7, 8, 9};
    memory::Block block;
    block.type = kTypes[upTo(6)];
    block.width = odb_isTensor(block.type) ? 1 + upTo(5) : 1 + upTo(3);
    block.elementBased = upTo(2) > 0;
    const int rows = upTo(3) == 0 ? upTo(40) : upTo(300);
    for (int i = 0; i < rows * block.width; ++i) block.doubles.push_back(number());
    for (int i = 0; i < rows; ++i) block.mises.push_back(static_cast<float>(number()));
    if (upTo(2) > 0 || rows == 0) {
      block.floats.assign(block.doubles.begin(), block.doubles.end());
      block.doubles.clear();
    }
    for (const std::string& label : kSixLabels) {
      if (upTo(3) > 0) block.labels.push_back(upTo(9) > 0 ? label : "S" + label);
    }
    return block;
  }

  void drawSwitches() {
    switches() = ExtractionSwitches();
    switches().fieldComponents = upTo(3) > 0;
    switches().engineeringMax = upTo(1) == 0;
    switches().engineeringMin = upTo(1) == 0;
    constexpr double kPercentages[] = {0, 1, 10, 33, 50, 99, 100};
    switches().percentage = kPercentages[upTo(6)];
  }

  // All numbers of the results, as bits; one NaN is as good as another.
  static std::vector<std::uint64_t> bits() {
    std::vector<std::uint64_t> all;
    const auto add = [&](const Extremes& extremes) {
      for (const double x : {extremes.max, extremes.min, extremes.engineeringMax, extremes.engineeringMin}) {
        all.push_back(x == x ? std::bit_cast<std::uint64_t>(x) : ~std::uint64_t{0});
      }
    };
    add(reductionResults().block);
    for (const Extremes& extremes : reductionResults().vector) add(extremes);
    for (const Extremes& extremes : reductionResults().tensor) add(extremes);
    return all;
  }
};

TEST_F(BulkPropertyTest, BlockAfterBlockAgreesWithThePlainLoops) {
  ReductionResults fast;
  ReductionResults plain;
  for (int round = 0; round < 20000; ++round) {
    drawSwitches();
    const odb_FieldBulkData data(block());
    reductionResults() = plain;
    plainReduceBulkBlock(data);
    plain = reductionResults();
    const std::vector<std::uint64_t> expected = bits();
    reductionResults() = fast;
    reduceBulkBlock(data, out_, "Step-1", 1, "F", {}, "", false);
    fast = reductionResults();
    ASSERT_EQ(bits(), expected) << "round " << round << ", type " << data.type() << ", " << data.valueCount()
                                << " rows of " << data.width();
  }
}

}  // namespace
