#include "odbaccess/block_content.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kernels/kernels.h"
#include "odbaccess/guard.h"

namespace odb_detail {

BlockContent::BlockContent(std::shared_ptr<const FieldPlan> field, const BlockPlan& plan, int frame)
    : field_(std::move(field)), plan_(plan), frame_(frame), rowOf_(plan.location().rowOf()) {}

namespace {

// Blocks up to this size are read whole.
constexpr std::int64_t kSmallBytes = std::int64_t{32} << 10U;

}  // namespace

template <class Number>
Number* BlockContent::stored() const {
  std::unique_ptr<Number[]>& kept = std::get<std::unique_ptr<Number[]>>(numbers_);
  if (!kept) {
    auto numbers = std::make_unique_for_overwrite<Number[]>(static_cast<std::size_t>(storedRows()) *
                                                            static_cast<std::size_t>(width()));
    guarded([&] { block().readStored(frame_, numbers.get()); });
    kept = std::move(numbers);
  }
  return kept.get();
}

template float* BlockContent::stored() const;
template double* BlockContent::stored() const;

bool BlockContent::isAtHand() const {
  if (std::get<0>(numbers_) || std::get<1>(numbers_) || !block().hasDirectRows()) return true;
  const auto numberSize = static_cast<std::int64_t>(block().isDouble() ? sizeof(double) : sizeof(float));
  return block().storedRows() * block().width() * numberSize <= kSmallBytes;
}

template <class Number>
void BlockContent::forEachPiece(const std::function<void(int, int, const Number*)>& take) const {
  ReadAhead& reader = location().readAhead();
  const std::size_t rowBytes = static_cast<std::size_t>(width()) * sizeof(Number);
  const auto inAll = static_cast<std::size_t>(storedRows());
  const std::size_t inPiece = std::max<std::size_t>(reader.pieceBytes() / rowBytes, 1);
  const auto countOf = [=](std::size_t index) { return std::min(inPiece, inAll - index * inPiece); };
  const ReadAhead::Read read = [&](std::size_t index, std::byte* buffer) {
    block().readRows(frame_, static_cast<std::int64_t>(index * inPiece), static_cast<std::int64_t>(countOf(index)),
                     buffer);
  };
  const ReadAhead::Take hand = [&](std::size_t index, const std::byte* buffer) {
    take(static_cast<int>(index * inPiece), static_cast<int>(countOf(index)), reinterpret_cast<const Number*>(buffer));
  };
  guarded([&] { reader.run((inAll + inPiece - 1) / inPiece, read, hand); });
}

template void BlockContent::forEachPiece(const std::function<void(int, int, const float*)>& take) const;
template void BlockContent::forEachPiece(const std::function<void(int, int, const double*)>& take) const;

namespace {

constexpr std::size_t kFirstShear = 3;

template <class Number>
Tensor tensorOf(const Number* row, const std::array<int, 6>& columns, bool engineeringShear) {
  Tensor tensor{};
  for (std::size_t i = 0; i < tensor.size(); ++i) {
    if (columns[i] >= 0) tensor[i] = static_cast<double>(row[columns[i]]);
    if (engineeringShear && i >= kFirstShear) tensor[i] *= 0.5;
  }
  return tensor;
}

template <class Number>
double magnitudeOf(const Number* row, int width) {
  double sum = 0.0;
  for (int j = 0; j < width; ++j) sum += static_cast<double>(row[j]) * static_cast<double>(row[j]);
  return std::sqrt(sum);
}

}  // namespace

Tensor BlockContent::tensor(int row) const {
  const std::size_t at = static_cast<std::size_t>(row) * static_cast<std::size_t>(width());
  const bool halved = field_->info().engineeringShear;
  return block().isDouble() ? tensorOf(stored<double>() + at, plan_.columnsOfTensor(), halved)
                            : tensorOf(stored<float>() + at, plan_.columnsOfTensor(), halved);
}

double BlockContent::magnitude(int row) const {
  const std::size_t at = static_cast<std::size_t>(row) * static_cast<std::size_t>(width());
  return block().isDouble() ? magnitudeOf(stored<double>() + at, width()) : magnitudeOf(stored<float>() + at, width());
}

const float* BlockContent::mises() const {
  if (!mises_) {
    const auto count = static_cast<std::size_t>(storedRows());
    auto equivalents = std::make_unique_for_overwrite<float[]>(count);
    if (!block().isDouble() && plan_.isCanonical()) {
      kernels::best().equivalents(stored<float>(), count, width(), field_->info().engineeringShear, equivalents.get());
    } else {
      for (int row = 0; row < storedRows(); ++row) equivalents[static_cast<std::size_t>(row)] = misesOf(tensor(row));
    }
    mises_ = std::move(equivalents);
  }
  return mises_.get();
}

const InvariantStretch& BlockContent::findInvariantsAround(int row) const {
  constexpr int kRows = InvariantStretch::kRows;
  if (invariants_.empty()) invariants_.resize(static_cast<std::size_t>((storedRows() + kRows - 1) / kRows));
  auto stretch = std::make_unique_for_overwrite<InvariantStretch>();
  const int first = row / kRows * kRows;
  const auto count = static_cast<std::size_t>(std::min(kRows, storedRows() - first));
  if (!block().isDouble() && plan_.isCanonical()) {
    const float* const from = stored<float>() + static_cast<std::ptrdiff_t>(first) * width();
    findInvariants(from, count, width(), field_->info().engineeringShear, *stretch);
  } else {
    std::array<Tensor, kRows> tensors;
    for (std::size_t i = 0; i < count; ++i) tensors[i] = tensor(first + static_cast<int>(i));
    findInvariants(tensors.data(), count, *stretch);
  }
  return *(invariants_[static_cast<std::size_t>(row / kRows)] = std::move(stretch));
}

void BlockContent::invariantColumn(odb_InvariantEnum code, float* out) const {
  const int place = invariantPlace(code);
  for (int first = 0; first < storedRows(); first += InvariantStretch::kRows) {
    const auto& numbers = invariantsAround(first).numbers;
    const int count = std::min(InvariantStretch::kRows, storedRows() - first);
    for (int i = 0; i < count; ++i) *out++ = numbers[i][place];
  }
}

}  // namespace odb_detail
