#include "odbaccess/block_storage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <type_traits>

#include "kernels/kernels.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_FieldBulkData.h"

namespace odb_detail {

std::shared_ptr<const BlockStorage> BlockStorage::subset(const std::shared_ptr<SetStorage>& set) const {
  SharedRows rows = content_->location().rowsIn(set);
  if (selection_) {
    std::vector<int> both;
    for (int i = 0, j = 0; i < rows->size() && j < selection_->size();) {
      const int a = (*rows)[i];
      const int b = (*selection_)[j];
      if (a == b) both.push_back(a);
      i += a <= b ? 1 : 0;
      j += b <= a ? 1 : 0;
    }
    rows = std::make_shared<const RowSelection>(std::move(both));
  }
  if (rows->size() == 0) return nullptr;
  return std::make_shared<const BlockStorage>(content_, std::move(rows));
}

const int* BlockStorage::storedRows(int from, int count, std::vector<int>& buffer) const {
  const int* const rowOf = distinct_ ? nullptr : content_->rowOf();
  if (rowOf != nullptr && contentRow(from + count - 1) - contentRow(from) == count - 1) return rowOf + contentRow(from);
  buffer.resize(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) buffer[static_cast<std::size_t>(i)] = storedRow(from + i);
  return buffer.data();
}

std::shared_ptr<const BlockStorage> BlockStorage::distinctOf(const std::shared_ptr<const BlockStorage>& block) {
  if (block->content_->rowOf() == nullptr || block->rows() == 0) return block;
  return std::make_shared<const BlockStorage>(*block, block->content_->location().distinctRowsOf(block->selection_));
}

namespace {

// Copies columns of rows: column `columns[j]` goes to place j, 0 where it is negative. `from(i)` is row i.
template <class Number, class From>
void gatherInto(const std::vector<int>& columns, int rows, From&& from, Number* to) {
  const std::size_t width = columns.size();
  for (int i = 0; i < rows; ++i, to += width) {
    const Number* const row = from(i);
    for (std::size_t j = 0; j < width; ++j) to[j] = columns[j] < 0 ? Number{0} : row[columns[j]];
  }
}

template <int kWidth, class Number>
void copyRowsOf(const Number* stored, const int* rows, int count, Number* to) {
  for (int i = 0; i < count; ++i, to += kWidth) std::copy_n(stored + std::ptrdiff_t{rows[i]} * kWidth, kWidth, to);
}

// Copies whole rows. The widths of vectors and tensors are known to the compiler: a call for each row would take
// longer.
template <class Number>
void copyRows(const Number* stored, const int* rows, int count, int width, Number* to) {
  switch (width) {
    case 1:
      return copyRowsOf<1>(stored, rows, count, to);
    case 3:
      return copyRowsOf<3>(stored, rows, count, to);
    case 4:
      return copyRowsOf<4>(stored, rows, count, to);
    case 6:
      return copyRowsOf<6>(stored, rows, count, to);
    default:
      for (int i = 0; i < count; ++i, to += width) std::copy_n(stored + std::ptrdiff_t{rows[i]} * width, width, to);
  }
}

template <class Number, class From>
std::vector<Number> gather(const std::vector<int>& columns, int rows, From&& from) {
  std::vector<Number> out(static_cast<std::size_t>(rows) * columns.size());
  gatherInto(columns, rows, from, out.data());
  return out;
}

// The same of all rows of a block.
template <class Number>
std::vector<Number> gather(const BlockStorage& block, const std::vector<int>& columns) {
  const Number* const stored = block.content()->template stored<Number>();
  const auto width = static_cast<std::size_t>(block.content()->width());
  return gather<Number>(columns, block.rows(),
                        [&](int row) { return stored + static_cast<std::size_t>(block.storedRow(row)) * width; });
}

}  // namespace

int BlockStorage::bulkWidth() const { return static_cast<int>(content_->plan().bulkColumns().size()); }

template <class Number>
Number* BlockStorage::bulkRows() const {
  if (content_->block().isDouble() != std::is_same_v<Number, double>) return nullptr;
  const std::vector<int>& columns = content_->plan().bulkColumns();
  const bool isAsStored = !selection_ && content_->rowOf() == nullptr;
  if (isAsStored && content_->plan().isWholeRow()) return content_->stored<Number>();
  Kept<Number>& kept = std::get<Kept<Number>>(arranged().bulk);
  if (!kept) kept = gather<Number>(*this, columns);
  return kept->data();
}

template float* BlockStorage::bulkRows() const;
template double* BlockStorage::bulkRows() const;

int BlockStorage::fieldRowLength() const { return static_cast<int>(content_->plan().columnsOfField().size()); }

template <class Number>
const std::vector<Number>& BlockStorage::inFieldOrder() const {
  Kept<Number>& kept = std::get<Kept<Number>>(arranged().fieldOrder);
  if (!kept) kept = gather<Number>(*this, content_->plan().columnsOfField());
  return *kept;
}

template <class Number>
const Number* BlockStorage::fieldRow(int row) const {
  if (content_->block().isDouble() != std::is_same_v<Number, double>) return nullptr;
  if (!content_->plan().isInFieldOrder()) {
    return inFieldOrder<Number>().data() + static_cast<std::size_t>(row) * content_->plan().columnsOfField().size();
  }
  return content_->stored<Number>() +
         static_cast<std::size_t>(storedRow(row)) * static_cast<std::size_t>(content_->width());
}

template const float* BlockStorage::fieldRow(int) const;
template const double* BlockStorage::fieldRow(int) const;

template <class Number>
const Number* BlockStorage::fieldRows(int from, int count, std::vector<Number>& buffer) const {
  if (content_->block().isDouble() != std::is_same_v<Number, double>) return nullptr;
  const int width = content_->width();
  const std::vector<int>& columns = content_->plan().columnsOfField();
  const bool isWholeRow = content_->plan().isInFieldOrder() && columns.size() == static_cast<std::size_t>(width);
  const Number* const stored = content_->stored<Number>();
  if (isWholeRow && isOneStretch(from, count)) return stored + std::ptrdiff_t{storedRow(from)} * width;
  buffer.resize(static_cast<std::size_t>(count) * columns.size());
  std::vector<int> storedRowsOfThem;
  const int* const rows = storedRows(from, count, storedRowsOfThem);
  if (isWholeRow) {
    copyRows(stored, rows, count, width, buffer.data());
  } else {
    gatherInto(
        columns, count, [&](int i) { return stored + std::ptrdiff_t{rows[i]} * width; }, buffer.data());
  }
  return buffer.data();
}

template const float* BlockStorage::fieldRows(int, int, std::vector<float>&) const;
template const double* BlockStorage::fieldRows(int, int, std::vector<double>&) const;

int* BlockStorage::labels(const std::vector<int>& all, Kept<int> Arranged::*selected) const {
  if (all.empty()) return nullptr;
  // Nobody writes to them; the interface hands out plain pointers.
  if (!selection_) return const_cast<int*>(all.data());
  Kept<int>& kept = arranged().*selected;
  if (!kept) {
    kept.emplace();
    kept->reserve(static_cast<std::size_t>(rows()));
    for (int row = 0; row < rows(); ++row) kept->push_back(all[static_cast<std::size_t>(contentRow(row))]);
  }
  return kept->data();
}

int* BlockStorage::elementLabels() const {
  return labels(content_->location().elementLabels(), &Arranged::elementLabels);
}

int* BlockStorage::nodeLabels() const { return labels(content_->location().nodeLabels(), &Arranged::nodeLabels); }

int* BlockStorage::integrationPoints() const {
  return labels(content_->location().integrationPoints(), &Arranged::integrationPoints);
}

int BlockStorage::numberOfElements() const {
  if (!selection_) return content_->location().numberOfElements();
  const int* const labels = elementLabels();
  return labels == nullptr ? 0 : countDifferent(*arranged().elementLabels);
}

float* BlockStorage::mises() const {
  if (!content_->isTensor()) return nullptr;
  const float* const all = content_->mises();
  // Nobody writes to them; the interface hands out plain pointers.
  if (!selection_ && content_->rowOf() == nullptr) return const_cast<float*>(all);
  Kept<float>& kept = arranged().mises;
  if (!kept) {
    kept.emplace();
    kept->reserve(static_cast<std::size_t>(rows()));
    for (int row = 0; row < rows(); ++row) kept->push_back(all[storedRow(row)]);
  }
  return kept->data();
}

namespace {

// So many rows of those that are stored once are put side by side at a time.
constexpr int kRowsOfTile = 4096;

}  // namespace

template <class Number>
void BlockStorage::forEachTileOf(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  if (content_->rowOf() == nullptr) return forEachStoredTileOf<Number>(take);
  const std::vector<int>& columns = content_->plan().bulkColumns();
  const Number* const stored = content_->stored<Number>();
  const int width = content_->width();
  std::vector<Number> tile(static_cast<std::size_t>(std::min(rows(), kRowsOfTile)) * columns.size());
  std::vector<int> storedRowsOfTile;
  for (int first = 0; first < rows(); first += kRowsOfTile) {
    const int count = std::min(kRowsOfTile, rows() - first);
    const int* const of = storedRows(first, count, storedRowsOfTile);
    if (content_->plan().isWholeRow()) {
      copyRows(stored, of, count, width, tile.data());
    } else {
      gatherInto(
          columns, count, [&](int i) { return stored + std::ptrdiff_t{of[i]} * width; }, tile.data());
    }
    take(tileOf(first, count, tile.data()));
  }
}

template <class Number>
odb_FieldBulkTile BlockStorage::tileOf(int first, int count, const Number* rows) const {
  if constexpr (std::is_same_v<Number, float>) {
    return odb_FieldBulkTile(*this, first, count, rows, nullptr);
  } else {
    return odb_FieldBulkTile(*this, first, count, nullptr, rows);
  }
}

template <class Number>
void BlockStorage::forEachStoredTileOf(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  const auto hand = [&](int first, int count, const Number* rows) { take(tileOf(first, count, rows)); };
  if (rows() == 0) return;
  const std::vector<int>& columns = content_->plan().bulkColumns();
  const bool isWhole = content_->plan().isWholeRow();
  if (selection_) return hand(0, rows(), bulkRows<Number>());
  const auto handGathered = [&](int first, int count, const Number* rows) {
    hand(first, count, gather<Number>(columns, count, [&](int i) { return rows + i * content_->width(); }).data());
  };
  if (!content_->isAtHand()) {
    return isWhole ? content_->forEachPiece<Number>(hand) : content_->forEachPiece<Number>(handGathered);
  }
  if (isWhole) return hand(0, content_->storedRows(), content_->stored<Number>());
  if (content_->rowOf() == nullptr) return hand(0, rows(), bulkRows<Number>());
  handGathered(0, content_->storedRows(), content_->stored<Number>());
}

void BlockStorage::forEachTile(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  return content_->block().isDouble() ? forEachTileOf<double>(take) : forEachTileOf<float>(take);
}

void BlockStorage::forEachStoredTile(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  if (selection_) return forEachTile(take);
  return content_->block().isDouble() ? forEachStoredTileOf<double>(take) : forEachStoredTileOf<float>(take);
}

}  // namespace odb_detail
