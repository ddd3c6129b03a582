#include "result/number_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string_view>

namespace {

constexpr int kDigits = 6;

// The number 1.00000 to 9.99999 times a power of ten, the first as its six digits.
struct Decimal {
  int digits;
  int exponent;
};

// The powers of ten that a double holds exactly.
constexpr std::array<double, 23> kPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// A number of that size as one from 100000 on with kDigits before the point, rounded once.
double scaled(double size, int exponent) {
  const int shift = kDigits - 1 - exponent;
  const double power = kPowersOfTen[static_cast<std::size_t>(std::abs(shift))];
  return shift >= 0 ? size * power : size / power;
}

// The digits of a number that is neither very large nor very small, unless it lies so near to the middle of two numbers
// of six digits that its rounding in `scaled`, a ten-billionth at most, could decide.
std::optional<Decimal> nearestDecimal(double size) {
  constexpr double kSmallest = 1e-16;
  constexpr double kLargest = 1e26;
  constexpr double kNearMiddle = 1e-9;
  if (!(size >= kSmallest && size <= kLargest)) return std::nullopt;
  // The power of two times lg 2: the power of ten, or one less.
  const int binary = static_cast<int>(std::bit_cast<std::uint64_t>(size) >> 52U) - 1023;
  int exponent = (binary * 1233) >> 12;
  double number = scaled(size, exponent);
  if (number >= 1e6) number = scaled(size, ++exponent);
  int digits = static_cast<int>(number);
  const double rest = number - digits;
  if (std::abs(rest - 0.5) < kNearMiddle) return std::nullopt;
  if (rest > 0.5) ++digits;
  if (digits == 1'000'000) return Decimal{100'000, exponent + 1};
  return Decimal{digits, exponent};
}

// The characters of one number.
class Characters {
 public:
  void add(char c) { characters_[static_cast<std::size_t>(count_++)] = c; }
  void add(const char* from, int count) {
    std::copy_n(from, count, characters_.begin() + count_);
    count_ += count;
  }
  void addZeros(int count) {
    for (int i = 0; i < count; ++i) add('0');
  }
  void addExponent(int exponent) {
    const int size = std::abs(exponent);
    add('e');
    add(exponent < 0 ? '-' : '+');
    add(static_cast<char>('0' + size / 100));
    add(static_cast<char>('0' + size / 10 % 10));
    add(static_cast<char>('0' + size % 10));
  }
  std::string_view text() const { return {characters_.data(), static_cast<std::size_t>(count_)}; }

 private:
  std::array<char, 32> characters_;
  int count_ = 0;
};

void addDecimal(Characters& to, const Decimal& decimal) {
  char digits[kDigits];
  int left = decimal.digits;
  for (int i = kDigits - 1; i >= 0; --i, left /= 10) digits[i] = static_cast<char>('0' + left % 10);
  int count = kDigits;
  while (digits[count - 1] == '0') --count;
  const int exponent = decimal.exponent;
  const bool isScientific = exponent < -4 || exponent >= kDigits;
  const int whole = isScientific ? 1 : std::max(exponent + 1, 0);  // digits before the point
  if (whole == 0) to.add('0');
  to.add(digits, std::min(whole, count));
  to.addZeros(whole - count);
  if (count > whole) {
    to.add('.');
    if (!isScientific) to.addZeros(-1 - exponent);
    to.add(digits + whole, count - whole);
  }
  if (isScientific) to.addExponent(exponent);
}

// The same of any number, as the library has it.
void addExactly(Characters& to, double number) {
  char buffer[32];
  const auto end = std::to_chars(std::begin(buffer), std::end(buffer), number, std::chars_format::general, kDigits);
  const char* const mark = std::find(buffer, end.ptr, 'e');
  to.add(buffer, static_cast<int>(mark - buffer));
  if (mark == end.ptr) return;
  int exponent = 0;
  std::from_chars(mark + 2, end.ptr, exponent);
  to.addExponent(mark[1] == '-' ? -exponent : exponent);
}

}  // namespace

void appendNumber(std::string& text, double number) {
  // The sign of a NaN says nothing to a reader of results.
  if (std::isnan(number)) number = std::abs(number);
  Characters characters;
  if (const std::optional<Decimal> decimal = nearestDecimal(std::abs(number))) {
    if (number < 0) characters.add('-');
    addDecimal(characters, *decimal);
  } else {
    addExactly(characters, number);
  }
  text += characters.text();
}
