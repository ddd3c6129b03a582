#include "odbaccess/odb_FieldValueRun.h"

#include <algorithm>

#include "odbaccess/block_storage.h"

int odb_FieldValueRun::count() const { return block_->rows(); }

odb_FieldValue odb_FieldValueRun::value(int i) const { return odb_FieldValue(block_, i); }

int odb_FieldValueRun::type() const { return odb_FieldValue(block_, 0).type(); }

int odb_FieldValueRun::precision() const { return odb_FieldValue(block_, 0).precision(); }

int odb_FieldValueRun::dataCount() const { return block_->fieldRowLength(); }

const float* odb_FieldValueRun::floatData(int from, int count) { return block_->fieldRows(from, count, floats_); }

const double* odb_FieldValueRun::doubleData(int from, int count) { return block_->fieldRows(from, count, doubles_); }

void odb_FieldValueRun::magnitude(int from, int count, float* out) const {
  for (int i = 0; i < count; ++i) out[i] = odb_FieldValue(block_, from + i).magnitude();
}

void odb_FieldValueRun::mises(int from, int count, float* out) const {
  if (!block_->content()->isTensor()) {
    std::fill_n(out, count, 0.0F);
    return;
  }
  const float* const all = block_->content()->mises();
  if (block_->isOneStretch(from, count)) {
    std::copy_n(all + block_->storedRow(from), count, out);
    return;
  }
  for (int i = 0; i < count; ++i) out[i] = all[block_->storedRow(from + i)];
}

void odb_FieldValueRun::invariant(odb_InvariantEnum code, int from, int count, float* out) const {
  if (!block_->content()->isTensor()) {
    std::fill_n(out, count, 0.0F);
    return;
  }
  const int place = odb_detail::invariantPlace(code);
  const bool isOneStretch = block_->isOneStretch(from, count);
  for (int i = 0; i < count;) {
    constexpr int kRows = odb_detail::InvariantStretch::kRows;
    const int stretch = block_->storedRow(from + i) / kRows;
    const float* const numbers = block_->content()->invariantsAround(stretch * kRows).numbers[place];
    if (isOneStretch) {
      const int first = block_->storedRow(from + i) - stretch * kRows;
      const int together = std::min(count - i, kRows - first);
      std::copy_n(numbers + first, together, out + i);
      i += together;
      continue;
    }
    for (; i < count; ++i) {
      const int row = block_->storedRow(from + i) - stretch * kRows;
      if (row < 0 || row >= kRows) break;
      out[i] = numbers[row];
    }
  }
}
