#include <algorithm>
#include <cmath>
#include <numeric>
#include <string_view>
#include <type_traits>

#include "kernels/kernels.h"
#include "odbaccess/block_storage.h"
#include "odbaccess/guard.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_FieldBulkData.h"

namespace odb_detail {

BlockContent::BlockContent(std::shared_ptr<const odbstore::StoredStep> step, const odbstore::StoredField& field,
                           const odbstore::StoredBlock& block, int frame, std::shared_ptr<LocationStorage> location)
    : step_(std::move(step)), field_(field), block_(block), frame_(frame), location_(std::move(location)) {
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
  const std::vector<std::string>& fieldLabels = field_.info.componentLabels;
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

template <class Number>
std::vector<Number>& BlockContent::stored() const {
  std::optional<std::vector<Number>>& numbers = std::get<std::optional<std::vector<Number>>>(numbers_);
  if (!numbers) {
    numbers.emplace(static_cast<std::size_t>(rows()) * static_cast<std::size_t>(width()));
    guarded([&] { block_.read(frame_, numbers->data()); });
  }
  return *numbers;
}

template std::vector<float>& BlockContent::stored() const;
template std::vector<double>& BlockContent::stored() const;

bool BlockContent::isAtHand() const {
  return std::get<0>(numbers_) || std::get<1>(numbers_) || !block_.hasDirectRows();
}

template <class Number>
void BlockContent::forEachPiece(const std::function<void(int, int, const Number*)>& take) const {
  ReadAhead& reader = location_->readAhead();
  const std::size_t rowBytes = static_cast<std::size_t>(width()) * sizeof(Number);
  const auto inAll = static_cast<std::size_t>(rows());
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
  const bool halved = field_.info.engineeringShear;
  return block_.isDouble() ? tensorOf(&stored<double>()[at], columnsOfTensor_, halved)
                           : tensorOf(&stored<float>()[at], columnsOfTensor_, halved);
}

double BlockContent::magnitude(int row) const {
  const std::size_t at = static_cast<std::size_t>(row) * static_cast<std::size_t>(width());
  return block_.isDouble() ? magnitudeOf(&stored<double>()[at], width()) : magnitudeOf(&stored<float>()[at], width());
}

std::shared_ptr<const BlockStorage> BlockStorage::subset(SetStorage& set) const {
  std::vector<int> rows = content_->location().rowsIn(set);
  if (selection_) {
    std::vector<int> both;
    std::set_intersection(rows.begin(), rows.end(), selection_->begin(), selection_->end(), std::back_inserter(both));
    rows = std::move(both);
  }
  if (rows.empty()) return nullptr;
  return std::make_shared<const BlockStorage>(content_, std::move(rows));
}

namespace {

bool isElementBased(const BlockContent& content) {
  return odbstore::hasElementLabels(content.location().info().position) && content.rows() > 0;
}

// Copies columns of rows: column `columns[j]` goes to place j, 0 where it is negative. `from(i)` is row i.
template <class Number, class From>
std::vector<Number> gather(const std::vector<int>& columns, int rows, From&& from) {
  const std::size_t width = columns.size();
  std::vector<Number> out(static_cast<std::size_t>(rows) * width);
  Number* to = out.data();
  for (int i = 0; i < rows; ++i, to += width) {
    const Number* const row = from(i);
    for (std::size_t j = 0; j < width; ++j) to[j] = columns[j] < 0 ? Number{0} : row[columns[j]];
  }
  return out;
}

// The same of all rows of a block.
template <class Number>
std::vector<Number> gather(const BlockStorage& block, const std::vector<int>& columns) {
  const Number* const stored = block.content()->template stored<Number>().data();
  const auto width = static_cast<std::size_t>(block.content()->width());
  return gather<Number>(columns, block.rows(),
                        [&](int row) { return stored + static_cast<std::size_t>(block.contentRow(row)) * width; });
}

// The columns of the bulk rows: canonical places for tensors on elements, as stored for all else.
std::vector<int> bulkColumns(const BlockContent& content) {
  std::vector<int> columns;
  if (isElementBased(content) && content.isTensor()) {
    columns.assign(content.columnsOfTensor().begin(), content.columnsOfTensor().end());
    while (!columns.empty() && columns.back() < 0) columns.pop_back();
  } else {
    columns.resize(static_cast<std::size_t>(content.width()));
    std::iota(columns.begin(), columns.end(), 0);
  }
  return columns;
}

bool isWholeRow(const std::vector<int>& columns, int width) {
  int place = 0;
  return static_cast<int>(columns.size()) == width &&
         std::all_of(columns.begin(), columns.end(), [&](int c) { return c == place++; });
}

}  // namespace

int BlockStorage::bulkWidth() const { return static_cast<int>(bulkColumns(*content_).size()); }

template <class Number>
Number* BlockStorage::bulkRows() const {
  if (content_->block().isDouble() != std::is_same_v<Number, double>) return nullptr;
  const std::vector<int> columns = bulkColumns(*content_);
  if (!selection_ && isWholeRow(columns, content_->width())) return content_->stored<Number>().data();
  Kept<Number>& kept = std::get<Kept<Number>>(bulk_);
  if (!kept) kept = gather<Number>(*this, columns);
  return kept->data();
}

template float* BlockStorage::bulkRows() const;
template double* BlockStorage::bulkRows() const;

int BlockStorage::fieldRowLength() const { return static_cast<int>(content_->columnsOfField().size()); }

template <class Number>
const std::vector<Number>& BlockStorage::inFieldOrder() const {
  Kept<Number>& kept = std::get<Kept<Number>>(fieldOrder_);
  if (!kept) kept = gather<Number>(*this, content_->columnsOfField());
  return *kept;
}

template <class Number>
const Number* BlockStorage::fieldRow(int row) const {
  if (content_->block().isDouble() != std::is_same_v<Number, double>) return nullptr;
  if (!content_->isInFieldOrder()) {
    return inFieldOrder<Number>().data() + static_cast<std::size_t>(row) * content_->columnsOfField().size();
  }
  return content_->stored<Number>().data() +
         static_cast<std::size_t>(contentRow(row)) * static_cast<std::size_t>(content_->width());
}

template const float* BlockStorage::fieldRow(int) const;
template const double* BlockStorage::fieldRow(int) const;

int* BlockStorage::labels(const std::vector<int>& all, std::optional<std::vector<int>>& kept) const {
  if (all.empty()) return nullptr;
  // Nobody writes to them; the interface hands out plain pointers.
  if (!selection_) return const_cast<int*>(all.data());
  if (!kept) {
    kept.emplace();
    kept->reserve(static_cast<std::size_t>(rows()));
    for (int row = 0; row < rows(); ++row) kept->push_back(all[static_cast<std::size_t>(contentRow(row))]);
  }
  return kept->data();
}

int* BlockStorage::elementLabels() const { return labels(content_->location().elementLabels(), elementLabels_); }

int* BlockStorage::nodeLabels() const { return labels(content_->location().nodeLabels(), nodeLabels_); }

int* BlockStorage::integrationPoints() const {
  return labels(content_->location().integrationPoints(), integrationPoints_);
}

int BlockStorage::numberOfElements() const {
  if (!selection_) return content_->location().numberOfElements();
  const int* const labels = elementLabels();
  return labels == nullptr ? 0 : countDifferent(*elementLabels_);
}

float* BlockStorage::mises() const {
  if (!content_->isTensor()) return nullptr;
  if (!mises_) {
    mises_.emplace(static_cast<std::size_t>(rows()));
    for (int row = 0; row < rows(); ++row) {
      (*mises_)[static_cast<std::size_t>(row)] = misesOf(content_->tensor(contentRow(row)));
    }
  }
  return mises_->data();
}

template <class Number>
void BlockStorage::forEachTileOf(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  const auto hand = [&](int first, int count, const Number* rows) {
    if constexpr (std::is_same_v<Number, float>) {
      take(odb_FieldBulkTile(*this, first, count, rows, nullptr));
    } else {
      take(odb_FieldBulkTile(*this, first, count, nullptr, rows));
    }
  };
  if (rows() == 0) return;
  if (selection_ || content_->isAtHand()) return hand(0, rows(), bulkRows<Number>());
  const std::vector<int> columns = bulkColumns(*content_);
  if (isWholeRow(columns, content_->width())) return content_->forEachPiece<Number>(hand);
  content_->forEachPiece<Number>([&](int first, int count, const Number* rows) {
    hand(first, count, gather<Number>(columns, count, [&](int i) { return rows + i * content_->width(); }).data());
  });
}

void BlockStorage::forEachTile(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  return content_->block().isDouble() ? forEachTileOf<double>(take) : forEachTileOf<float>(take);
}

}  // namespace odb_detail

namespace {

// Calls `take` with the equivalent stress of each row of a tile in double precision. Rows have the components in their
// canonical places, up to the last one that there is.
template <class Take>
void forEachMises(const double* rows, int count, int width, bool halvedShear, Take&& take) {
  for (int i = 0; i < count; ++i, rows += width) {
    odb_detail::Tensor tensor{};
    for (int j = 0; j < width; ++j) tensor[static_cast<std::size_t>(j)] = rows[j] * (halvedShear && j >= 3 ? 0.5 : 1.0);
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
