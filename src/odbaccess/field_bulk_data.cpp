#include <algorithm>
#include <cmath>

#include "kernels/kernels.h"
#include "odbaccess/block_storage.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_FieldBulkData.h"

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
  const bool halved = block_.content()->field().info.engineeringShear;
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
  const bool halved = block_.content()->field().info.engineeringShear;
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

int odb_FieldBulkData::type() const { return storage_->content()->block().type(); }

int odb_FieldBulkData::precision() const {
  return storage_->content()->block().isDouble() ? odb_Enum::doublePrecision : odb_Enum::singlePrecision;
}

int odb_FieldBulkData::valueCount() const { return storage_->rows(); }
int odb_FieldBulkData::width() const { return storage_->bulkWidth(); }
float* odb_FieldBulkData::data() const { return storage_->bulkRows<float>(); }
double* odb_FieldBulkData::dataDouble() const { return storage_->bulkRows<double>(); }

odb_Sequence<odb_String> odb_FieldBulkData::componentLabels() const {
  odb_Sequence<odb_String> labels;
  for (const std::string& label : storage_->content()->block().componentLabels()) labels.append(odb_String(label));
  return labels;
}

int odb_FieldBulkData::numberOfElements() const { return storage_->numberOfElements(); }
int* odb_FieldBulkData::elementLabels() const { return storage_->elementLabels(); }
int* odb_FieldBulkData::nodeLabels() const { return storage_->nodeLabels(); }
int* odb_FieldBulkData::integrationPoints() const { return storage_->integrationPoints(); }
float* odb_FieldBulkData::mises() const { return storage_->mises(); }

void odb_FieldBulkData::forEachTile(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  storage_->forEachTile(take);
}
