#include "odbaccess/odb_FieldBulkTile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kernels/kernels.h"
#include "odbaccess/block_storage.h"

namespace {

// Calls `take` with the equivalent stress of each row of a tile in double precision. Rows have the components in their
// canonical places, up to the last one that there is; other components may follow them.
template <class Take>
void forEachMises(const double* rows, int count, int width, bool halvedShear, Take&& take) {
  for (int i = 0; i < count; ++i, rows += width) {
    odb_detail::Tensor tensor{};
    for (int j = 0; j < std::min(width, kernels::kTensorWidth); ++j)
      tensor[static_cast<std::size_t>(j)] = rows[j] * (halvedShear && j >= 3 ? 0.5 : 1.0);
    take(i, odb_detail::misesOf(tensor));
  }
}

}  // namespace

void odb_FieldBulkTile::mises(float* out) const {
  const bool halved = block_.content()->info().engineeringShear;
  const int width = block_.bulkWidth();
  if (floats_ != nullptr) {
    kernels::best().equivalents(floats_, static_cast<std::size_t>(count_), width, halved, out);
  } else {
    forEachMises(doubles_, count_, width, halved, [&](int i, float value) { out[i] = value; });
  }
}

void odb_FieldBulkTile::takeMises(float& max, float& min) const {
  const auto take = [&](float high, float low) {
    if (high > max) max = high;
    if (low < min) min = low;
  };
  const bool halved = block_.content()->info().engineeringShear;
  const int width = block_.bulkWidth();
  if (floats_ != nullptr) {
    kernels::EquivalentRange squares;
    kernels::best().equivalentRange(floats_, static_cast<std::size_t>(count_), width, halved, &squares);
    // Not a number, and so nothing to be taken, where no row has counted.
    take(static_cast<float>(std::sqrt(squares.largest)), static_cast<float>(std::sqrt(squares.smallest)));
  } else {
    forEachMises(doubles_, count_, width, halved, [&](int, float value) { take(value, value); });
  }
}
