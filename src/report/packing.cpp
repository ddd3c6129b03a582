#include "report/packing.h"

#include <zlib.h>

#include <bit>
#include <cmath>
#include <limits>
#include <new>

namespace report {

namespace {

template <class Bits>
Bits zigzag(Bits difference) {
  constexpr unsigned kTop = std::numeric_limits<Bits>::digits - 1;
  const bool isNegative = difference >> kTop;
  const auto twice = static_cast<Bits>(difference << 1U);
  return isNegative ? static_cast<Bits>(~twice) : twice;
}

template <class Bits>
std::vector<Bits> differences(std::span<const Bits> items, std::size_t stride) {
  std::vector<Bits> made(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Bits before = i < stride ? Bits{0} : items[i - stride];
    made[i] = zigzag(static_cast<Bits>(items[i] - before));
  }
  return made;
}

template <class Bits>
std::string planes(std::span<const Bits> items) {
  std::string bytes(items.size() * sizeof(Bits), '\0');
  for (std::size_t plane = 0; plane < sizeof(Bits); ++plane) {
    for (std::size_t i = 0; i < items.size(); ++i)
      bytes[plane * items.size() + i] = static_cast<char>(items[i] >> (8U * plane) & 0xFFU);
  }
  return bytes;
}

std::string deflated(std::string_view bytes) {
  std::string out(compressBound(bytes.size()), '\0');
  uLongf size = out.size();
  const int status = compress2(reinterpret_cast<Bytef*>(out.data()), &size,
                               reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), Z_DEFAULT_COMPRESSION);
  if (status != Z_OK) throw std::bad_alloc();
  out.resize(size);
  return out;
}

template <class Bits>
PackedArray packBits(ItemType type, std::span<const Bits> items, std::size_t stride) {
  const std::vector<Bits> made = differences(items, stride);
  return {base64(deflated(planes(std::span<const Bits>(made)))), type, items.size(), true, stride};
}

}  // namespace

std::string base64(std::string_view bytes) {
  static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto at = [&](std::size_t k) {
      return i + k < bytes.size() ? static_cast<unsigned>(static_cast<unsigned char>(bytes[i + k])) : 0U;
    };
    const unsigned bits = at(0) << 16U | at(1) << 8U | at(2);
    text += kDigits[bits >> 18U];
    text += kDigits[bits >> 12U & 63U];
    text += i + 1 < bytes.size() ? kDigits[bits >> 6U & 63U] : '=';
    text += i + 2 < bytes.size() ? kDigits[bits & 63U] : '=';
  }
  return text;
}

PackedArray pack(std::span<const float> items, std::size_t stride) {
  std::vector<std::uint32_t> bits(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) bits[i] = std::bit_cast<std::uint32_t>(items[i]);
  return packBits<std::uint32_t>(ItemType::float32, bits, stride);
}

PackedArray pack(std::span<const std::int32_t> items, std::size_t stride) {
  std::vector<std::uint32_t> bits(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) bits[i] = static_cast<std::uint32_t>(items[i]);
  return packBits<std::uint32_t>(ItemType::int32, bits, stride);
}

PackedArray pack(std::span<const std::uint16_t> items, std::size_t stride) {
  return packBits<std::uint16_t>(ItemType::uint16, items, stride);
}

PackedArray pack(std::string_view bytes) { return {base64(deflated(bytes)), ItemType::bytes, bytes.size(), false, 1}; }

Quantized quantize(std::span<const float> rows, std::size_t width, std::size_t column) {
  Quantized made;
  double lowest = std::numeric_limits<double>::infinity();
  double highest = -lowest;
  for (std::size_t i = column; i < rows.size(); i += width) {
    if (!std::isfinite(rows[i])) continue;
    lowest = std::min<double>(lowest, rows[i]);
    highest = std::max<double>(highest, rows[i]);
  }
  if (lowest <= highest) {
    made.lowest = lowest;
    made.highest = highest;
  }
  const double range = made.highest - made.lowest;
  made.items.reserve(rows.size() / width);
  for (std::size_t i = column; i < rows.size(); i += width) {
    const double place = range > 0 ? (rows[i] - made.lowest) / range : 0.0;
    made.items.push_back(std::isfinite(rows[i]) ? static_cast<std::uint16_t>(std::lround(place * kQuantized))
                                                : kNoNumber);
  }
  return made;
}

}  // namespace report
