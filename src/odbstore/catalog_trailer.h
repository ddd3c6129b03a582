// The last bytes of a file with a catalog: they identify the catalog and show whether file and catalog still belong
// together.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

inline constexpr std::size_t kTrailerBytes = 32;

struct Trailer {
  std::int64_t length = 0;         // of the data set /catalog: the catalog, then the trailer
  std::uint32_t catalogSum = 0;    // CRC32C of the catalog
  std::uint32_t structureSum = 0;  // and of every byte before it that is in no array of the catalog
};

// The trailer as the file has it: "KLVXCAT3", the length (8 bytes), the two sums (4 bytes each), 8 zeros; all numbers
// with the lowest byte first.
std::array<std::byte, kTrailerBytes> packed(const Trailer& trailer);

// The catalog of an open file of `size` bytes if the file ends with a trailer and the catalog matches its checksum;
// nothing otherwise, also if the file cannot be read. `trailer` receives the trailer.
std::optional<std::vector<std::byte>> readCatalog(int file, std::int64_t size, Trailer& trailer);

// The checksum of all bytes of a file from 0 to `end` outside the extents, which are in file order. Nothing if they
// cannot be read.
std::optional<std::uint32_t> sumStructure(int file, const std::vector<Extent>& extents, std::int64_t end);

}  // namespace odbstore
