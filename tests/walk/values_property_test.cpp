// The reduction of values of every kind, mixed, against one value after the other.
#include <limits>
#include <random>

#include "plain_value_reduction.h"
#include "reduce/reduce_field_output_values.h"
#include "walk_test.h"

namespace {

class ValuesPropertyTest : public WalkTest {
 protected:
  int upTo(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n + 1)); }

  float number() {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    switch (upTo(flavour_)) {
      case 0:
        return std::normal_distribution<float>(0, 100)(random_);
      case 1:
        return static_cast<float>(upTo(4) - 2);
      case 2:
        return upTo(1) == 0 ? 0.0F : -0.0F;
      case 3:
        return std::numeric_limits<float>::quiet_NaN();
      default:
        return upTo(1) == 0 ? kInfinity : -kInfinity;
    }
  }

  // Values in runs of some length, each run of a kind of its own.
  std::vector<memory::Value> values() {
    constexpr int kTypes[] = {2, 3, 5, 6, 7, 8, 9, 2, 5, 4};
    flavour_ = upTo(4);
    std::vector<memory::Value> all;
    const int runs = upTo(3);
    for (int run = 0; run < runs; ++run) {
      memory::Value kind;
      kind.type = kTypes[upTo(9)];
      kind.precision =
          upTo(5) == 0 && kind.type == odb_Enum::scalar ? odb_Enum::doublePrecision : odb_Enum::singlePrecision;
      const int width = kind.type == odb_Enum::scalar ? 1 : 1 + upTo(5);
      const int count = upTo(4) == 0 ? upTo(2500) : upTo(60);
      for (int i = 0; i < count; ++i) {
        memory::Value value = kind;
        for (int c = 0; c < width; ++c) value.floats.push_back(number());
        if (kind.precision == odb_Enum::doublePrecision) {
          value.doubles.assign(value.floats.begin(), value.floats.end());
          value.doubles[0] /= 3.0;
          value.floats.clear();
        }
        value.magnitude = number();
        value.mises = number();
        value.tresca = number();
        value.inv3 = number();
        value.minPrincipal = number();
        value.outOfPlanePrincipal = number();
        all.push_back(value);
      }
    }
    return all;
  }

  std::mt19937 random_{20261121};
  int flavour_ = 0;
};

TEST_F(ValuesPropertyTest, RegionAfterRegionAgreesWithOneValueAfterTheOther) {
  const odb_Sequence<odb_InvariantEnum> invariants(std::vector<odb_InvariantEnum>{
      odb_Enum::tresca, odb_Enum::inv3, odb_Enum::minPrincipal, odb_Enum::outOfPlanePrincipal});
  ComponentSlots fastSlots;
  ComponentSlots plainSlots;
  for (int round = 0; round < 4000; ++round) {
    switches() = ExtractionSwitches();
    switches().fieldComponents = upTo(3) > 0;
    switches().engineeringMax = upTo(1) == 0;
    switches().engineeringMin = upTo(1) == 0;
    switches().tensorInvariants = upTo(1) == 0;
    switches().percentage = 10.0 * upTo(10);
    const odb_SequenceFieldValue sequence(values());
    odb_Sequence<odb_String> labels;
    for (const std::string& label : kSixLabels) {
      if (upTo(3) > 0) labels.append(odb_String("S" + label));
    }
    const char* const scope = upTo(1) == 0 ? "ALL" : "NODE_SET";
    odb_Sequence<odb_String> cut = labels;
    componentSlots() = plainSlots;
    plainReduceFieldOutputValues(sequence, out_, "Step-1", 1, scope, "__TOP", "S", invariants, cut, 0, "", false);
    plainSlots = componentSlots();
    const std::vector<std::string> expected = takeLines();
    cut = labels;
    componentSlots() = fastSlots;
    reduceFieldOutputValues(sequence, out_, "Step-1", 1, scope, "__TOP", "S", invariants, cut, 0, "", false);
    fastSlots = componentSlots();
    ASSERT_EQ(takeLines(), expected) << "round " << round;
  }
}

}  // namespace
