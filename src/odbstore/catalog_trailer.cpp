#include "odbstore/catalog_trailer.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "base/descriptor.h"
#include "odbstore/crc32c.h"

namespace odbstore {

namespace {

constexpr std::string_view kMagic = "KLVXCAT3";
constexpr std::size_t kLengthAt = 8;
constexpr std::size_t kCatalogSumAt = 16;
constexpr std::size_t kStructureSumAt = 20;
constexpr std::size_t kReservedAt = 24;

template <class Number>
void put(std::array<std::byte, kTrailerBytes>& bytes, std::size_t at, Number number) {
  std::memcpy(bytes.data() + at, &number, sizeof(number));
}

template <class Number>
Number get(const std::array<std::byte, kTrailerBytes>& bytes, std::size_t at) {
  Number number = 0;
  std::memcpy(&number, bytes.data() + at, sizeof(number));
  return number;
}

bool isTrailer(const std::array<std::byte, kTrailerBytes>& bytes) {
  return std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) == 0 && get<std::uint64_t>(bytes, kReservedAt) == 0;
}

// Adds a stretch of the file to a sum.
bool addBytes(int file, std::int64_t begin, std::int64_t end, std::vector<std::byte>& buffer, std::uint32_t& sum) {
  while (begin < end) {
    const auto count = static_cast<std::size_t>(std::min(end - begin, kPieceBytes));
    if (buffer.size() < count) buffer.resize(count);
    const std::span piece(buffer.data(), count);
    if (base::readAt(file, begin, piece) != count) return false;
    sum = crc32c(piece, sum);
    begin += static_cast<std::int64_t>(count);
  }
  return true;
}

}  // namespace

std::array<std::byte, kTrailerBytes> packed(const Trailer& trailer) {
  std::array<std::byte, kTrailerBytes> bytes{};
  std::memcpy(bytes.data(), kMagic.data(), kMagic.size());
  put(bytes, kLengthAt, trailer.length);
  put(bytes, kCatalogSumAt, trailer.catalogSum);
  put(bytes, kStructureSumAt, trailer.structureSum);
  return bytes;
}

std::optional<std::vector<std::byte>> readCatalog(int file, std::int64_t size, Trailer& trailer) {
  constexpr auto trailerBytes = static_cast<std::int64_t>(kTrailerBytes);
  std::array<std::byte, kTrailerBytes> bytes{};
  if (size < trailerBytes || base::readAt(file, size - trailerBytes, bytes) != kTrailerBytes) return std::nullopt;
  if (!isTrailer(bytes)) return std::nullopt;
  trailer = {get<std::int64_t>(bytes, kLengthAt), get<std::uint32_t>(bytes, kCatalogSumAt),
             get<std::uint32_t>(bytes, kStructureSumAt)};
  if (trailer.length < trailerBytes || trailer.length > size) return std::nullopt;
  std::vector<std::byte> catalog(static_cast<std::size_t>(trailer.length - trailerBytes));
  if (base::readAt(file, size - trailer.length, catalog) != catalog.size()) return std::nullopt;
  if (crc32c(catalog) != trailer.catalogSum) return std::nullopt;
  return catalog;
}

std::optional<std::uint32_t> sumStructure(int file, const std::vector<Extent>& extents, std::int64_t end) {
  std::vector<std::byte> buffer;
  std::uint32_t sum = 0;
  std::int64_t at = 0;
  for (const Extent& extent : extents) {
    if (!addBytes(file, at, extent.begin, buffer, sum)) return std::nullopt;
    at = extent.end;
  }
  if (!addBytes(file, at, end, buffer, sum)) return std::nullopt;
  return sum;
}

}  // namespace odbstore
