#include "base/numbers.h"

#include <bit>
#include <cstring>
#include <utility>

namespace base {

// What is written goes from memory to the file as it is.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr std::uint8_t kBig = 16;  // what the codes of the other byte order have in addition

bool isBig(NumberFormat format) { return static_cast<std::uint8_t>(format) > kBig; }

NumberFormat littleOf(NumberFormat format) {
  const auto code = static_cast<std::uint8_t>(format);
  return static_cast<NumberFormat>(code > kBig ? code - kBig : code);
}

template <class Stored>
Stored numberAt(const std::byte* at, bool big) {
  std::byte bytes[sizeof(Stored)];
  for (std::size_t i = 0; i < sizeof(Stored); ++i) bytes[i] = at[big ? sizeof(Stored) - 1 - i : i];
  Stored number;
  std::memcpy(&number, bytes, sizeof(Stored));
  return number;
}

template <class Stored>
std::optional<std::size_t> intsFrom(const std::byte* stored, bool big, std::span<int> out) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    const Stored number = numberAt<Stored>(stored + i * sizeof(Stored), big);
    if (!std::in_range<int>(number)) return i;
    out[i] = static_cast<int>(number);
  }
  return std::nullopt;
}

template <class Number>
void realsFrom(std::span<const std::byte> stored, NumberFormat format, std::span<Number> out) {
  constexpr NumberFormat own = sizeof(Number) == sizeof(float) ? NumberFormat::float32 : NumberFormat::float64;
  if (format == own) {
    if (!out.empty()) std::memcpy(out.data(), stored.data(), out.size_bytes());
    return;
  }
  const bool big = isBig(format);
  const bool isSingle = sizeOf(format) == sizeof(float);
  for (std::size_t i = 0; i < out.size(); ++i) {
    out[i] = isSingle ? static_cast<Number>(numberAt<float>(stored.data() + i * sizeof(float), big))
                      : static_cast<Number>(numberAt<double>(stored.data() + i * sizeof(double), big));
  }
}

}  // namespace

bool isNumberFormat(std::uint8_t code) {
  const auto isSmall = [](std::uint8_t little) { return little >= 1 && little <= 10; };
  return isSmall(code) || (code > kBig + 2 && isSmall(static_cast<std::uint8_t>(code - kBig)));
}

std::size_t sizeOf(NumberFormat format) {
  switch (littleOf(format)) {
    case NumberFormat::int8:
    case NumberFormat::uint8:
      return 1;
    case NumberFormat::int16:
    case NumberFormat::uint16:
      return 2;
    case NumberFormat::int32:
    case NumberFormat::uint32:
    case NumberFormat::float32:
      return 4;
    default:
      return 8;
  }
}

bool isFloatingPoint(NumberFormat format) {
  return littleOf(format) == NumberFormat::float32 || littleOf(format) == NumberFormat::float64;
}

std::optional<std::size_t> toInts(std::span<const std::byte> stored, NumberFormat format, std::span<int> out) {
  const bool big = isBig(format);
  switch (littleOf(format)) {
    case NumberFormat::int8:
      return intsFrom<std::int8_t>(stored.data(), big, out);
    case NumberFormat::uint8:
      return intsFrom<std::uint8_t>(stored.data(), big, out);
    case NumberFormat::int16:
      return intsFrom<std::int16_t>(stored.data(), big, out);
    case NumberFormat::uint16:
      return intsFrom<std::uint16_t>(stored.data(), big, out);
    case NumberFormat::uint32:
      return intsFrom<std::uint32_t>(stored.data(), big, out);
    case NumberFormat::int64:
      return intsFrom<std::int64_t>(stored.data(), big, out);
    case NumberFormat::uint64:
      return intsFrom<std::uint64_t>(stored.data(), big, out);
    default:
      if (big) return intsFrom<std::int32_t>(stored.data(), big, out);
      if (!out.empty()) std::memcpy(out.data(), stored.data(), out.size_bytes());
      return std::nullopt;
  }
}

void toFloats(std::span<const std::byte> stored, NumberFormat format, std::span<float> out) {
  realsFrom(stored, format, out);
}

void toDoubles(std::span<const std::byte> stored, NumberFormat format, std::span<double> out) {
  realsFrom(stored, format, out);
}

}  // namespace base
