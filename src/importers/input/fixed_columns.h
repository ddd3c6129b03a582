// Numbers in columns of one width as most lines of a result file have them, all characters of a number at a time in
// registers. Anything else, number or not, is left to text_fields.h, which is the reference of what a text means.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace importers {

static_assert(std::endian::native == std::endian::little, "the first character of a text is the lowest byte here");

namespace fixed_columns {

template <class Word>
Word load(const char* text) {
  Word word = 0;
  std::memcpy(&word, text, sizeof(word));
  return word;
}

// The same in every byte of a word.
constexpr std::uint64_t everywhere(unsigned byte) { return std::uint64_t{0x0101010101010101U} * byte; }

// Whether all eight characters are digits: their upper half is 3, and stays 3 with 6 added.
constexpr bool areDigits(std::uint64_t text) {
  constexpr std::uint64_t upper = everywhere(0xF0);
  return ((text & upper) | ((text + everywhere(6)) & upper) >> 4U) == everywhere(0x33);
}

// The number of eight digits, the first in the lowest byte: neighbours are joined to numbers of two, four and eight.
constexpr std::uint32_t joined(std::uint64_t digits) {
  digits = (digits & everywhere(0x0F)) * (1U + (10U << 8U)) >> 8U;
  digits = (digits & 0x00FF00FF00FF00FFU) * (1U + (100U << 16U)) >> 16U;
  return static_cast<std::uint32_t>((digits & 0x0000FFFF0000FFFFU) * (1U + (10000ULL << 32U)) >> 32U);
}

// From the lowest on, each the double nearest to it.
constexpr int kLargestPower = 32;
inline constexpr std::array<double, 2 * kLargestPower + 1> kPowers = {
    1e-32, 1e-31, 1e-30, 1e-29, 1e-28, 1e-27, 1e-26, 1e-25, 1e-24, 1e-23, 1e-22, 1e-21, 1e-20,
    1e-19, 1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10, 1e-9,  1e-8,  1e-7,
    1e-6,  1e-5,  1e-4,  1e-3,  1e-2,  1e-1,  1e0,   1e1,   1e2,   1e3,   1e4,   1e5,   1e6,
    1e7,   1e8,   1e9,   1e10,  1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18,  1e19,
    1e20,  1e21,  1e22,  1e23,  1e24,  1e25,  1e26,  1e27,  1e28,  1e29,  1e30,  1e31,  1e32};

}  // namespace fixed_columns

// The same as floatFrom() for the twelve characters at `text` where they are printed as "-1.23456E+07". False for any
// other text, for numbers that are very large or very small, and where the nearest float is not plain at once.
inline bool readScientific(const char* text, float& number) {
  using namespace fixed_columns;
  const auto head = load<std::uint64_t>(text);
  const auto tail = load<std::uint32_t>(text + 8);
  const auto sign = static_cast<char>(head & 0xFFU);
  const auto signOfExponent = static_cast<char>(tail >> 8U & 0xFFU);
  const bool hasMarks = (head >> 16U & 0xFFU) == '.' && (tail & 0xFFU) == 'E' && (sign == ' ' || sign == '-') &&
                        (signOfExponent == '+' || signOfExponent == '-');
  // "00", the digit before the point and the five after it.
  const std::uint64_t mantissaText =
      (head & 0xFFFFFFFFFF000000U) | (head & 0xFF00U) << 8U | (everywhere('0') & 0xFFFFU);
  const std::uint32_t tens = (tail >> 16U & 0xFFU) - '0';
  const std::uint32_t ones = (tail >> 24U) - '0';
  if (!hasMarks || !areDigits(mantissaText) || tens > 9 || ones > 9) return false;
  const double mantissa = static_cast<int>(joined(mantissaText));
  const auto written = static_cast<int>(10 * tens + ones);
  const int direction = 1 - 2 * static_cast<int>(signOfExponent == '-');
  const int exponent = direction * written - 5;
  if (exponent < -kLargestPower || exponent > kLargestPower) return false;
  // Both the power and the product are off by half a unit in the last place of a double at most, so the nearest float
  // is that of the number itself unless the middle between two floats is as near as that.
  const double size = mantissa * kPowers[static_cast<std::size_t>(exponent + kLargestPower)];
  constexpr std::uint64_t below = (std::uint64_t{1} << 29U) - 1;
  constexpr std::uint64_t middle = std::uint64_t{1} << 28U;
  constexpr std::uint64_t reach = 2;
  if ((std::bit_cast<std::uint64_t>(size) & below) - (middle - reach) <= 2 * reach) return false;
  // Signs are as good as random: a branch on them would be taken wrongly half of the time.
  const std::uint64_t signBit = std::uint64_t{sign == '-'} << 63U;
  number = static_cast<float>(std::bit_cast<double>(std::bit_cast<std::uint64_t>(size) | signBit));
  return true;
}

inline constexpr std::size_t kLabelColumns = 10;

// The same as integerFrom() for the ten characters at `text` where they are blanks and up to eight digits after them.
// False for any other text.
inline bool readLabel(const char* text, int& label) {
  using namespace fixed_columns;
  const auto tail = load<std::uint64_t>(text + 2);
  // Digits have a bit that blanks have not, and are blanks with that bit otherwise.
  constexpr std::uint64_t bit = everywhere('0' ^ ' ');
  const std::uint64_t marks = (tail & bit) >> 4U;
  const std::uint64_t blanks = (marks ^ everywhere(1)) * 0xFFU;
  const bool areBlanksBefore = text[0] == ' ' && text[1] == ' ' && marks != 0 && (marks | marks << 8U) == marks &&
                               (tail & blanks) == (everywhere(' ') & blanks);
  if (!areBlanksBefore || !areDigits(tail | bit)) return false;
  label = static_cast<int>(joined(tail | bit));
  return true;
}

}  // namespace importers
