#include "odbaccess/block_content.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <string_view>

#include "kernels/kernels.h"
#include "odbaccess/guard.h"

namespace odb_detail {

BlockContent::BlockContent(std::shared_ptr<const odbstore::StoredStep> step,
                           std::shared_ptr<const odbstore::FieldInfo> info, const odbstore::StoredBlock& block,
                           int frame, std::shared_ptr<LocationStorage> location)
    : step_(std::move(step)),
      info_(std::move(info)),
      block_(block),
      frame_(frame),
      location_(std::move(location)),
      rowOf_(location_->rowOf()) {
  findColumns();
}

namespace {

// The place of a component label among the canonical components, by its last two characters; -1 for another.
int tensorPlace(std::string_view label) {
  const std::string_view ending = label.substr(label.size() - std::min<std::size_t>(label.size(), 2));
  const auto& known = odbstore::kTensorComponents;
  const auto found = std::find(known.begin(), known.end(), ending);
  return found == known.end() ? -1 : static_cast<int>(found - known.begin());
}

int placeOf(const std::vector<std::string>& labels, const std::string& label) {
  const auto found = std::find(labels.begin(), labels.end(), label);
  return found == labels.end() ? -1 : static_cast<int>(found - labels.begin());
}

}  // namespace

void BlockContent::findColumns() {
  const std::vector<std::string>& fieldLabels = info_->componentLabels;
  if (fieldLabels.empty()) {
    columnsOfField_.resize(static_cast<std::size_t>(width()));
    std::iota(columnsOfField_.begin(), columnsOfField_.end(), 0);
  }
  for (const std::string& label : fieldLabels) columnsOfField_.push_back(placeOf(block_.componentLabels(), label));
  int place = 0;
  inFieldOrder_ = std::all_of(columnsOfField_.begin(), columnsOfField_.end(), [&](int c) { return c == place++; });

  columnsOfTensor_.fill(-1);
  if (!isTensor()) return;
  const std::vector<std::string>& labels =
      block_.componentLabels().empty() ? odbstore::defaultTensorLabels(block_.type()) : block_.componentLabels();
  for (int column = 0; column < width(); ++column) {
    const int component = tensorPlace(labels[static_cast<std::size_t>(column)]);
    if (component < 0) continue;
    int& kept = columnsOfTensor_[static_cast<std::size_t>(component)];
    if (kept < 0) kept = column;
  }
}

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
    guarded([&] { block_.readStored(frame_, numbers.get()); });
    kept = std::move(numbers);
  }
  return kept.get();
}

template float* BlockContent::stored() const;
template double* BlockContent::stored() const;

bool BlockContent::isAtHand() const {
  if (std::get<0>(numbers_) || std::get<1>(numbers_) || !block_.hasDirectRows()) return true;
  const auto numberSize = static_cast<std::int64_t>(block_.isDouble() ? sizeof(double) : sizeof(float));
  return block_.storedRows() * block_.width() * numberSize <= kSmallBytes;
}

template <class Number>
void BlockContent::forEachPiece(const std::function<void(int, int, const Number*)>& take) const {
  ReadAhead& reader = location_->readAhead();
  const std::size_t rowBytes = static_cast<std::size_t>(width()) * sizeof(Number);
  const auto inAll = static_cast<std::size_t>(storedRows());
  const std::size_t inPiece = std::max<std::size_t>(reader.pieceBytes() / rowBytes, 1);
  const auto countOf = [=](std::size_t index) { return std::min(inPiece, inAll - index * inPiece); };
  const ReadAhead::Read read = [&](std::size_t index, std::byte* buffer) {
    block_.readRows(frame_, static_cast<std::int64_t>(index * inPiece), static_cast<std::int64_t>(countOf(index)),
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
  const bool halved = info_->engineeringShear;
  return block_.isDouble() ? tensorOf(stored<double>() + at, columnsOfTensor_, halved)
                           : tensorOf(stored<float>() + at, columnsOfTensor_, halved);
}

double BlockContent::magnitude(int row) const {
  const std::size_t at = static_cast<std::size_t>(row) * static_cast<std::size_t>(width());
  return block_.isDouble() ? magnitudeOf(stored<double>() + at, width()) : magnitudeOf(stored<float>() + at, width());
}

bool BlockContent::isCanonical() const {
  for (int c = 0; c < static_cast<int>(columnsOfTensor_.size()); ++c) {
    if (columnsOfTensor_[static_cast<std::size_t>(c)] != (c < width() ? c : -1)) return false;
  }
  return true;
}

const float* BlockContent::mises() const {
  if (!mises_) {
    const auto count = static_cast<std::size_t>(storedRows());
    auto equivalents = std::make_unique_for_overwrite<float[]>(count);
    if (!block_.isDouble() && isCanonical()) {
      kernels::best().equivalents(stored<float>(), count, width(), info_->engineeringShear, equivalents.get());
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
  if (!block_.isDouble() && isCanonical()) {
    const float* const from = stored<float>() + static_cast<std::ptrdiff_t>(first) * width();
    findInvariants(from, count, width(), info_->engineeringShear, *stretch);
  } else {
    std::array<Tensor, kRows> tensors;
    for (std::size_t i = 0; i < count; ++i) tensors[i] = tensor(first + static_cast<int>(i));
    findInvariants(tensors.data(), count, *stretch);
  }
  return *(invariants_[static_cast<std::size_t>(row / kRows)] = std::move(stretch));
}

}  // namespace odb_detail
