#include "importers/vtk/array_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "importers/input/text_fields.h"

namespace importers::vtk {

namespace {

constexpr std::size_t kTileBytes = std::size_t{1} << 18U;
constexpr std::size_t kLongestNumber = 400;  // digits of the longest numbers that are printed whole

constexpr bool isBetweenNumbers(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

template <std::size_t kSize>
using Bits = std::conditional_t<
    kSize == 1, std::uint8_t,
    std::conditional_t<kSize == 2, std::uint16_t, std::conditional_t<kSize == 4, std::uint32_t, std::uint64_t>>>;

std::uint8_t swapped(std::uint8_t bits) { return bits; }
std::uint16_t swapped(std::uint16_t bits) { return __builtin_bswap16(bits); }
std::uint32_t swapped(std::uint32_t bits) { return __builtin_bswap32(bits); }
std::uint64_t swapped(std::uint64_t bits) { return __builtin_bswap64(bits); }

// Whether every number of `From` is one of `To`, as far as anybody asks.
template <typename To, typename From>
bool fits(From number) {
  if constexpr (std::is_floating_point_v<To>) {
    return true;
  } else if constexpr (std::is_floating_point_v<From>) {
    constexpr double limit = 9007199254740992.0;  // beyond it not every integer is a double
    return number >= -limit && number <= limit && std::nearbyint(number) == number;
  } else {
    return std::in_range<To>(number);
  }
}

// False where a number does not fit.
template <typename From, typename To>
bool convert(const std::byte* from, bool isSwapped, std::span<To> out) {
  bool isGood = true;
  for (To& number : out) {
    Bits<sizeof(From)> bits;
    std::memcpy(&bits, from, sizeof(bits));
    from += sizeof(bits);
    const From value = std::bit_cast<From>(isSwapped ? swapped(bits) : bits);
    isGood = isGood && fits<To>(value);
    number = static_cast<To>(value);
  }
  return isGood;
}

template <typename To>
bool convert(NumberType type, const std::byte* from, bool isSwapped, std::span<To> out) {
  switch (type) {
    case NumberType::int8:
      return convert<std::int8_t>(from, isSwapped, out);
    case NumberType::uint8:
      return convert<std::uint8_t>(from, isSwapped, out);
    case NumberType::int16:
      return convert<std::int16_t>(from, isSwapped, out);
    case NumberType::uint16:
      return convert<std::uint16_t>(from, isSwapped, out);
    case NumberType::int32:
      return convert<std::int32_t>(from, isSwapped, out);
    case NumberType::uint32:
      return convert<std::uint32_t>(from, isSwapped, out);
    case NumberType::int64:
      return convert<std::int64_t>(from, isSwapped, out);
    case NumberType::uint64:
      return convert<std::uint64_t>(from, isSwapped, out);
    case NumberType::float32:
      return convert<float>(from, isSwapped, out);
    default:
      return convert<double>(from, isSwapped, out);
  }
}

template <typename Number>
constexpr bool isStoredAs(NumberType type) {
  if constexpr (std::is_same_v<Number, float>) return type == NumberType::float32;
  if constexpr (std::is_same_v<Number, double>) return type == NumberType::float64;
  return type == NumberType::int64;
}

template <typename Number>
bool numberOf(std::string_view word, Number& number) {
  if (word.front() == '+') word.remove_prefix(1);
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error == std::errc() && end == word.data() + word.size()) return true;
  if constexpr (std::is_same_v<Number, float>) {
    const std::optional<float> read = floatFrom(word);
    number = read.value_or(0);
    return read.has_value();
  } else {
    const std::optional<double> read = numberFrom(word);
    if (!read || !fits<Number>(*read)) return false;
    number = static_cast<Number>(*read);
    return true;
  }
}

}  // namespace

// The words between blanks in a stretch of the file.
class ArrayReader::Words {
 public:
  Words(const InputFile& file, std::uint64_t begin, std::uint64_t end)
      : file_(file), at_(begin), end_(end), text_(std::min<std::uint64_t>(kTileBytes, end - begin)) {}

  // Empty at the end. Good until the next call.
  std::string_view next() {
    for (;;) {
      while (next_ < filled_ && isBetweenNumbers(text_[next_])) ++next_;
      if (next_ < filled_) break;
      if (!refill(0)) return {};
    }
    std::size_t end = next_;
    for (;;) {
      while (end < filled_ && !isBetweenNumbers(text_[end])) ++end;
      if (end < filled_ || end - next_ > kLongestNumber) break;
      end -= next_;
      if (!refill(end)) break;
    }
    const std::string_view word(text_.data() + next_, end - next_);
    next_ = end;
    return word;
  }

 private:
  // Keeps `kept` characters from next_ on and reads on after them; false when nothing came. next_ is 0 then.
  bool refill(std::size_t kept) {
    std::memmove(text_.data(), text_.data() + next_, kept);
    next_ = 0;
    const std::size_t wanted = std::min<std::uint64_t>(text_.size() - kept, end_ - at_);
    const std::size_t got = file_.read(at_, std::as_writable_bytes(std::span(text_)).subspan(kept, wanted));
    at_ += got;
    filled_ = kept + got;
    return got > 0;
  }

  const InputFile& file_;
  std::uint64_t at_;
  std::uint64_t end_;
  std::vector<char> text_;
  std::size_t next_ = 0;
  std::size_t filled_ = 0;
};

ArrayReader::ArrayReader(const InputFile& file, const StoredArray& array) : file_(file), array_(array) {
  if (array.numbers() == 0) return;
  if (array.encoding == Encoding::text) {
    // A number and a blank, but for the last.
    if (array.numbers() > (array.end - array.begin + 1) / 2) {
      fail(fmt::format("holds fewer than the {} numbers that it should", array.numbers()));
    }
    words_ = std::make_unique<Words>(file, array.begin, array.end);
    return;
  }
  // What is packed becomes numbers of eight bytes, whatever it was.
  if (array.numbers() > mostBytes() / (array.isPacked ? sizeof(double) : sizeOf(array.type))) {
    if (!array.isPacked && array.encoding == Encoding::raw) failCut();
    fail(fmt::format("would hold {} numbers, more than {}", array.numbers(),
                     array.isPacked ? "so small a file may unpack to" : "its text has room for"));
  }
  std::unique_ptr<ByteStream> bytes;
  if (array.encoding == Encoding::raw) {
    bytes = std::make_unique<FileBytes>(file, array.begin, array.end);
  } else {
    bytes = std::make_unique<Base64Bytes>(file, array.begin, array.end);
  }
  if (array.isPacked) {
    openPacked(std::move(bytes));
  } else {
    openPlain(std::move(bytes));
  }
}

ArrayReader::~ArrayReader() = default;

// That the numbers can have.
std::uint64_t ArrayReader::mostBytes() const {
  if (array_.isPacked) return file_.mostMemory();
  const std::uint64_t length = array_.end - array_.begin;
  return array_.encoding == Encoding::raw ? length : length / 4 * 3 + 3;
}

void ArrayReader::fail(const std::string& reason) const {
  throw ImportError(file_.path(), array_.line, fmt::format("the array \"{}\" {}", array_.name, reason));
}

void ArrayReader::failCut() const {
  throw CutOff(file_.path(), array_.line, fmt::format("the file ends inside the array \"{}\"", array_.name));
}

void ArrayReader::fillBytes(std::span<std::byte> out) {
  if (bytes_->read(out) == out.size()) return;
  if (array_.encoding == Encoding::raw) failCut();
  fail(fmt::format("holds fewer than the {} numbers that it should", array_.numbers()));
}

std::uint64_t ArrayReader::readSize(ByteStream& bytes) const {
  std::array<std::byte, 8> stored{};
  if (bytes.read(std::span(stored).first(array_.headerBytes)) < array_.headerBytes) {
    if (array_.encoding == Encoding::raw) failCut();
    fail("is empty");
  }
  const auto type = array_.headerBytes == 4 ? NumberType::uint32 : NumberType::uint64;
  if (type == NumberType::uint32) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, stored.data(), sizeof(bits));
    return array_.isBigEndian ? swapped(bits) : bits;
  }
  std::uint64_t bits = 0;
  std::memcpy(&bits, stored.data(), sizeof(bits));
  return array_.isBigEndian ? swapped(bits) : bits;
}

void ArrayReader::openPlain(std::unique_ptr<ByteStream> bytes) {
  const std::uint64_t expected = array_.numbers() * sizeOf(array_.type);
  if (array_.headerBytes > 0) {
    const std::uint64_t said = readSize(*bytes);
    if (said != expected) fail(fmt::format("has {} bytes where {} are expected", said, expected));
  }
  if (array_.encoding == Encoding::raw && expected + array_.headerBytes > array_.end - array_.begin) failCut();
  bytes_ = std::move(bytes);
}

// The number of blocks, their size, that of a last one that is smaller, and the packed size of each.
void ArrayReader::openPacked(std::unique_ptr<ByteStream> bytes) {
  const std::uint64_t expected = array_.numbers() * sizeOf(array_.type);
  const std::uint64_t count = readSize(*bytes);
  UnpackedBytes::Blocks blocks;
  blocks.blockBytes = readSize(*bytes);
  const std::uint64_t last = readSize(*bytes);
  blocks.lastBytes = last == 0 ? blocks.blockBytes : last;
  if (count > (array_.end - array_.begin) / array_.headerBytes) {
    if (array_.encoding == Encoding::raw) failCut();
    fail(fmt::format("has {} packed blocks, more than it has room for", count));
  }
  const bool isPlausible = count > 0 && blocks.lastBytes <= blocks.blockBytes &&
                           count - 1 <= expected / std::max<std::uint64_t>(blocks.blockBytes, 1);
  if (!isPlausible || (count - 1) * blocks.blockBytes + blocks.lastBytes != expected) {
    fail(fmt::format("has {} packed blocks of {} bytes, the last of {}, where {} bytes are expected", count,
                     blocks.blockBytes, blocks.lastBytes, expected));
  }
  std::uint64_t packed = 0;
  for (std::uint64_t block = 0; block < count; ++block) {
    blocks.packedSizes.push_back(readSize(*bytes));
    if (blocks.packedSizes.back() > array_.end - array_.begin - packed) {
      if (array_.encoding == Encoding::raw) failCut();
      fail("has a packed block that is longer than its text");
    }
    packed += blocks.packedSizes.back();
  }
  bytes_ = std::make_unique<UnpackedBytes>(std::move(bytes), std::move(blocks), file_);
}

template <typename Number>
void ArrayReader::readText(std::span<Number> out) {
  for (Number& number : out) {
    const std::string_view word = words_->next();
    if (word.empty()) fail(fmt::format("holds fewer than the {} numbers that it should", array_.numbers()));
    if (!numberOf(word, number)) {
      fail(fmt::format("has \"{}\", which is not {}", word.substr(0, 40),
                       std::is_integral_v<Number> ? "an integer" : "a number"));
    }
  }
}

template <typename Number>
void ArrayReader::readBinary(std::span<Number> out) {
  const bool isSwapped = array_.isBigEndian != (std::endian::native == std::endian::big);
  if (!isSwapped && isStoredAs<Number>(array_.type)) return fillBytes(std::as_writable_bytes(out));
  const std::size_t size = sizeOf(array_.type);
  room_.resize(std::min(kTileBytes, out.size() * size));
  while (!out.empty()) {
    const std::size_t take = std::min(out.size(), room_.size() / size);
    fillBytes(std::span(room_).first(take * size));
    if (!convert(array_.type, room_.data(), isSwapped, out.first(take))) {
      fail("has a number that is not an integer, or is too large for one");
    }
    out = out.subspan(take);
  }
}

template <typename Number>
void ArrayReader::readAny(std::span<Number> out) {
  if (out.empty()) return;
  return words_ ? readText(out) : readBinary(out);
}

void ArrayReader::read(std::span<float> out) { readAny(out); }
void ArrayReader::read(std::span<double> out) { readAny(out); }
void ArrayReader::read(std::span<std::int64_t> out) { readAny(out); }

std::vector<std::int64_t> readIntegers(const InputFile& file, const StoredArray& array) {
  ArrayReader reader(file, array);
  std::vector<std::int64_t> numbers(array.numbers());
  reader.read(std::span(numbers));
  return numbers;
}

}  // namespace importers::vtk
