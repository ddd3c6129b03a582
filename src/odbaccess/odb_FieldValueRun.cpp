#include "odbaccess/odb_FieldValueRun.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "odbaccess/block_storage.h"

int odb_FieldValueRun::count() const { return block_->rows(); }

odb_FieldValue odb_FieldValueRun::value(int i) const { return odb_FieldValue(block_, i); }

int odb_FieldValueRun::type() const { return block_->content()->block().type(); }

int odb_FieldValueRun::precision() const {
  return block_->content()->block().isDouble() ? odb_Enum::doublePrecision : odb_Enum::singlePrecision;
}

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
  const int* const rows = block_->storedRows(from, count, rows_);
  for (int i = 0; i < count; ++i) out[i] = all[rows[i]];
}

void odb_FieldValueRun::invariants(std::span<const odb_InvariantEnum> codes, int from, int count, float* out) const {
  using odb_detail::InvariantStretch;
  if (!block_->content()->isTensor()) {
    std::fill_n(out, codes.size() * static_cast<std::size_t>(count), 0.0F);
    return;
  }
  // Columns of all stored rows pay where rows come again: without an index they would be one copy more.
  if (block_->isThroughIndex() && block_->rows() >= block_->content()->storedRows()) {
    takeFromColumns(codes, from, count, out);
    return;
  }
  std::array<const float*, InvariantStretch::kRows> numbers;
  for (int done = 0; done < count;) {
    const int together = std::min(count - done, InvariantStretch::kRows);
    for (int i = 0; i < together; ++i) {
      const int row = block_->storedRow(from + done + i);
      numbers[static_cast<std::size_t>(i)] =
          block_->content()->invariantsAround(row).numbers[row % InvariantStretch::kRows];
    }
    float* to = out + done;
    for (const odb_InvariantEnum code : codes) {
      const int place = odb_detail::invariantPlace(code);
      for (int i = 0; i < together; ++i) to[i] = numbers[static_cast<std::size_t>(i)][place];
      to += count;
    }
    done += together;
  }
}

void odb_FieldValueRun::takeFromColumns(std::span<const odb_InvariantEnum> codes, int from, int count,
                                        float* out) const {
  const auto stored = static_cast<std::size_t>(block_->content()->storedRows());
  if (!std::equal(codes.begin(), codes.end(), codesOfColumns_.begin(), codesOfColumns_.end())) {
    columns_.resize(codes.size() * stored);
    for (std::size_t c = 0; c < codes.size(); ++c) {
      block_->content()->invariantColumn(codes[c], columns_.data() + c * stored);
    }
    codesOfColumns_.assign(codes.begin(), codes.end());
  }
  const int* const rows = block_->storedRows(from, count, rows_);
  for (std::size_t c = 0; c < codes.size(); ++c, out += count) {
    const float* const column = columns_.data() + c * stored;
    for (int i = 0; i < count; ++i) out[i] = column[rows[i]];
  }
}
