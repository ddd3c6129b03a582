// The nine invariants of every version, against plain loops over one tensor.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kernels/kernels.h"
#include "plain_invariants.h"
#include "versions.h"

namespace {

using kernels::Kernels;
using Tensor = std::array<double, 6>;

// What tensors are like. The closed form finds the values of some, the iteration those of others.
enum class Kind {
  random,
  nearlyUniaxial,        // along an axis
  nearlyUniaxialAnyhow,  // along any direction
  nearlyBiaxial,         // two nearly equal values that are larger than the third
  nearlyDegenerate,      // two values about as far apart as where the closed form is given up
  uniaxial,
  planeStress,
  pureShear,
  hydrostatic,
  nearlyHydrostatic,
  smallIntegers,
  allSizes,
  tiny,
  huge,
  zeros,
  special,
  bits
};
constexpr Kind kKinds[] = {Kind::random,
                           Kind::nearlyUniaxial,
                           Kind::nearlyUniaxialAnyhow,
                           Kind::nearlyBiaxial,
                           Kind::nearlyDegenerate,
                           Kind::uniaxial,
                           Kind::planeStress,
                           Kind::pureShear,
                           Kind::hydrostatic,
                           Kind::nearlyHydrostatic,
                           Kind::smallIntegers,
                           Kind::allSizes,
                           Kind::tiny,
                           Kind::huge,
                           Kind::zeros,
                           Kind::special,
                           Kind::bits};

double normal(std::mt19937& random) { return std::normal_distribution<double>()(random); }

// A tensor with those eigenvalues, its directions drawn by lot.
Tensor turned(const std::array<double, 3>& values, std::mt19937& random) {
  std::array<double, 4> q{};  // a quaternion
  double length = 0;
  for (double& x : q) {
    x = normal(random);
    length += x * x;
  }
  for (double& x : q) x /= std::sqrt(length);
  const auto [w, x, y, z] = q;
  const double rotation[3][3] = {{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
                                 {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
                                 {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}};
  constexpr int kRow[] = {0, 1, 2, 0, 0, 1};
  constexpr int kColumn[] = {0, 1, 2, 1, 2, 2};
  Tensor tensor{};
  for (std::size_t c = 0; c < 6; ++c) {
    for (std::size_t k = 0; k < 3; ++k) tensor[c] += values[k] * rotation[kRow[c]][k] * rotation[kColumn[c]][k];
  }
  return tensor;
}

Tensor draw(Kind kind, std::mt19937& random) {
  using Floats = std::numeric_limits<float>;
  const double size = 100 * normal(random);
  const auto filled = [&](auto&& component) {
    Tensor tensor{};
    for (std::size_t c = 0; c < 6; ++c) tensor[c] = component(c);
    return tensor;
  };
  const auto scale = [&](int least, int most) {
    return std::ldexp(1.0, std::uniform_int_distribution<int>(least, most)(random));
  };
  switch (kind) {
    case Kind::random:
      return filled([&](std::size_t) { return 100 * normal(random); });
    case Kind::nearlyUniaxial:
      return filled([&](std::size_t c) { return (c == 0 ? 100 : scale(-20, 0)) * normal(random); });
    case Kind::nearlyUniaxialAnyhow:
      return turned({size, size * 1e-3 * normal(random), size * 1e-6 * normal(random)}, random);
    case Kind::nearlyBiaxial:
      return turned({size, size * (1 + scale(-40, -1)), size * 0.1 * normal(random)}, random);
    case Kind::nearlyDegenerate:
      return turned({size, 0.1 * size, size * (0.1 + 0.1 * std::abs(normal(random)))}, random);
    case Kind::uniaxial:
      return filled([&](std::size_t c) { return c == 0 ? std::round(size) : 0.0; });
    case Kind::planeStress:
      return filled([&](std::size_t c) { return c == 2 || c > 3 ? 0.0 : 100 * normal(random); });
    case Kind::pureShear:
      return filled([&](std::size_t c) { return c == 3 ? size : 0.0; });
    case Kind::hydrostatic:
      return filled([&](std::size_t c) { return c < 3 ? size : 0.0; });
    case Kind::nearlyHydrostatic:
      return filled([&](std::size_t c) { return (c < 3 ? size : 0.0) + scale(-30, 0) * normal(random); });
    case Kind::smallIntegers:
      return filled([&](std::size_t) { return static_cast<double>(random() % 5) - 2; });
    case Kind::allSizes:
      return filled([&](std::size_t) { return normal(random) * scale(-100, 100); });
    case Kind::tiny:
      return filled([&](std::size_t) { return normal(random) * static_cast<double>(Floats::min()) * scale(-25, 20); });
    case Kind::huge:
      return filled([&](std::size_t) { return normal(random) * static_cast<double>(Floats::max()) * 0.2; });
    case Kind::zeros:
      return filled([&](std::size_t) { return random() % 2 == 0 ? 0.0 : -0.0; });
    case Kind::special:
      return filled([&](std::size_t) {
        constexpr double kSpecial[] = {std::numeric_limits<double>::infinity(),
                                       -std::numeric_limits<double>::infinity(),
                                       std::numeric_limits<double>::quiet_NaN(), 0.0};
        return random() % 12 == 0 ? kSpecial[random() % 4] : normal(random);
      });
    default:
      return filled(
          [&](std::size_t) { return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(random()))); });
  }
}

// Rows of tensors, the shears halved where they are to be and numbers after the sixth that do not count.
template <class Number>
struct Rows {
  std::vector<Number> numbers;
  int width;
  bool halved;

  std::size_t count() const { return numbers.size() / static_cast<std::size_t>(width); }
  Tensor tensor(std::size_t row) const {
    Tensor tensor{};
    for (int c = 0; c < std::min(width, 6); ++c) {
      const Number x = numbers[row * static_cast<std::size_t>(width) + static_cast<std::size_t>(c)];
      tensor[static_cast<std::size_t>(c)] = static_cast<double>(x) * (halved && c >= 3 ? 0.5 : 1.0);
    }
    return tensor;
  }
};

template <class Number, class Draw>
Rows<Number> drawRows(std::size_t count, int width, bool halved, Draw&& drawOne) {
  Rows<Number> rows{{}, width, halved};
  for (std::size_t i = 0; i < count; ++i) {
    const Tensor tensor = drawOne();
    for (int c = 0; c < width; ++c)
      rows.numbers.push_back(static_cast<Number>(tensor[static_cast<std::size_t>(c % 6)]));
  }
  return rows;
}

void compute(const Kernels& version, const Rows<float>& rows, kernels::InvariantColumns& out) {
  version.invariantsFloat(rows.numbers.data(), rows.count(), rows.width, rows.halved, &out);
}
void compute(const Kernels& version, const Rows<double>& rows, kernels::InvariantColumns& out) {
  version.invariantsDouble(rows.numbers.data(), rows.count(), rows.width, rows.halved, &out);
}

// Equal to the last bit; which NaN it is does not matter.
template <class Number>
void expectInvariants(const Rows<Number>& rows, const std::string& what) {
  const std::size_t count = rows.count();
  std::vector<std::array<float, 9>> expected;
  for (std::size_t i = 0; i < count; ++i) expected.push_back(plainInvariants(rows.tensor(i)));
  for (const Kernels* const version : testedVersions()) {
    constexpr float kUntouched = -12345;
    std::vector<float> found(9 * count + 9, kUntouched);
    const auto column = [&](std::size_t i) { return found.data() + i * (count + 1); };
    kernels::InvariantColumns out = {column(0), column(1), column(2), column(3), column(4),
                                     column(5), column(6), column(7), column(8)};
    compute(*version, rows, out);
    for (std::size_t k = 0; k < 9; ++k) {
      for (std::size_t i = 0; i < count; ++i) {
        const float x = column(k)[i];
        if (std::isnan(x) && std::isnan(expected[i][k])) continue;
        ASSERT_EQ(std::bit_cast<std::uint32_t>(x), std::bit_cast<std::uint32_t>(expected[i][k]))
            << version->name << ", " << what << ", invariant " << k << " of row " << i << ": " << x << ", expected "
            << expected[i][k];
      }
      ASSERT_EQ(column(k)[count], kUntouched) << version->name << " writes behind column " << k;
    }
  }
}

template <class Number>
void expectInvariantsOf(Kind kind, std::size_t count, int width, bool halved, std::mt19937& random) {
  const auto rows = drawRows<Number>(count, width, halved, [&] { return draw(kind, random); });
  const std::string what = "kind " + std::to_string(static_cast<int>(kind)) + ", " + std::to_string(count) +
                           " rows of " + std::to_string(width) + (halved ? ", halved" : "");
  ASSERT_NO_FATAL_FAILURE(expectInvariants(rows, what));
}

TEST(Invariants, OfEveryKindAreThoseOfThePlainLoops) {
  std::mt19937 random(1);
  for (const Kind kind : kKinds) {
    for (const bool halved : {false, true}) {
      ASSERT_NO_FATAL_FAILURE(expectInvariantsOf<float>(kind, 20'000, 6, halved, random));
      ASSERT_NO_FATAL_FAILURE(expectInvariantsOf<double>(kind, 20'000, 6, halved, random));
      ASSERT_NO_FATAL_FAILURE(expectInvariantsOf<float>(kind, 5'000, 4, halved, random));
    }
  }
}

TEST(Invariants, OfEveryCountAndWidthAreThoseOfThePlainLoops) {
  std::mt19937 random(2);
  for (std::size_t count = 0; count <= 300; ++count) {
    for (const int width : {1, 2, 3, 4, 5, 6, 7, 9}) {
      const Kind kind = kKinds[random() % std::size(kKinds)];
      const bool halved = random() % 2 == 0;
      ASSERT_NO_FATAL_FAILURE(expectInvariantsOf<float>(kind, count, width, halved, random));
      ASSERT_NO_FATAL_FAILURE(expectInvariantsOf<double>(kind, count, width, halved, random));
    }
  }
}

// Vectors of rows are iterated at once, and single ones from all over a batch together: from none to all of them.
TEST(Invariants, OfMixedKindsAreThoseOfThePlainLoops) {
  std::mt19937 random(3);
  for (const int share : {1, 5, 20, 50, 80, 99}) {
    const auto one = [&] {
      const bool isRandom = static_cast<int>(random() % 100) >= share;
      return draw(isRandom ? Kind::random : kKinds[random() % std::size(kKinds)], random);
    };
    ASSERT_NO_FATAL_FAILURE(expectInvariants(drawRows<float>(20'000, 6, false, one), std::to_string(share) + " %"));
    ASSERT_NO_FATAL_FAILURE(expectInvariants(drawRows<double>(5'000, 6, false, one), std::to_string(share) + " %"));
  }
}

// Numbers whose invariants a double holds and a float does not.
TEST(Invariants, OfRowsBeyondTheRangeOfFloatsAreThoseOfThePlainLoops) {
  std::mt19937 random(4);
  for (const int exponent : {-1074, -1000, -600, -200, -150, 150, 200, 400, 600, 1000, 1022}) {
    const auto one = [&] {
      Tensor tensor = draw(Kind::random, random);
      for (double& x : tensor) x = std::ldexp(x / 256, exponent);
      return tensor;
    };
    ASSERT_NO_FATAL_FAILURE(expectInvariants(drawRows<double>(2'000, 6, false, one), std::to_string(exponent)));
  }
}

// By hand: sigma = 3 in uniaxial tension, along x and along (1, 1, 0).
TEST(Invariants, OfUniaxialTensionAreThoseByHand) {
  for (const Tensor& tensor : {Tensor{3, 0, 0, 0, 0, 0}, Tensor{1.5, 1.5, 0, 1.5, 0, 0}}) {
    const std::array<float, 9> found = plainInvariants(tensor);
    EXPECT_FLOAT_EQ(found[0], 3);
    EXPECT_FLOAT_EQ(found[1], -1);
    EXPECT_FLOAT_EQ(found[2], 3);
    EXPECT_FLOAT_EQ(found[3], 3);
    EXPECT_NEAR(found[4], 0, 1e-15);
    EXPECT_NEAR(found[5], 0, 1e-15);
  }
}

}  // namespace
