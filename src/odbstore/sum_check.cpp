#include "odbstore/sum_check.h"

#include <algorithm>
#include <vector>

#include "odbstore/crc32c.h"

namespace odbstore {

void compareSums(const DatabaseFile& file, const std::function<void(const DamagedPiece& piece)>& take) {
  const Catalog& catalog = file.catalog();
  std::vector<std::byte> buffer(static_cast<std::size_t>(kPieceBytes));
  const auto count = static_cast<std::int32_t>(catalog.columns().arrays()->format()->size());
  for (std::int32_t array = 0; array < count; ++array) {
    const ArrayInfo info = catalog.array(array);
    const std::span<const std::uint32_t> sums = catalog.sums(array);
    std::size_t sum = 0;
    for (std::int64_t slab = 0; sum < sums.size() && slab < info.slabs; ++slab) {
      const Extent extent = catalog.slab(info, slab);
      for (std::int64_t at = extent.begin; at < extent.end; at += kPieceBytes, ++sum) {
        const Extent bytes{at, std::min(at + kPieceBytes, extent.end)};
        const std::span piece = std::span(buffer).first(static_cast<std::size_t>(bytes.end - bytes.begin));
        file.read(at, piece, [] { return std::string(); });
        if (crc32c(piece) != sums[sum]) take({array, slab, bytes});
      }
    }
  }
}

}  // namespace odbstore
