#include "odbstore/catalog.h"

#include <algorithm>

#include "odbstore/catalog_check.h"
#include "odbstore/store_error.h"

namespace odbstore {

namespace {

// A catalog written by kolvex is never deeper or wider than its schema.
constexpr std::uint32_t kDeepest = 8;
constexpr std::uint32_t kMostTables = 64;

const columns::Catalog* verified(std::span<const std::byte> bytes, const std::string& file) {
  const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  const bool isPossible = bytes.size() >= sizeof(flatbuffers::uoffset_t) && bytes.size() < FLATBUFFERS_MAX_BUFFER_SIZE;
  if (isPossible) {
    flatbuffers::Verifier verifier(data, bytes.size(), kDeepest, kMostTables);
    if (columns::VerifyCatalogBuffer(verifier)) return columns::GetCatalog(data);
  }
  throw StoreError(file, "/catalog", "is damaged: not a valid catalog");
}

}  // namespace

bool ArrayInfo::isDirect() const {
  return packing == Packing::contiguous &&
         static_cast<std::uint8_t>(format) < static_cast<std::uint8_t>(base::NumberFormat::int16Big);
}

std::int64_t piecesOf(std::int64_t storedBytes) { return (storedBytes + kPieceBytes - 1) / kPieceBytes; }

Catalog::Catalog(std::vector<std::byte> bytes, const std::string& file, std::int64_t arraysEnd)
    : bytes_(std::move(bytes)), columns_(verified(bytes_, file)), arraysEnd_(arraysEnd) {
  CheckedColumns checked = checkColumns(*columns_, file, arraysEnd);
  extents_ = std::move(checked.extents);
  firstSums_ = std::move(checked.firstSums);
}

std::string_view Catalog::text(std::int32_t reference) const {
  if (reference == kNone) return {};
  const Places places = placesOf(columns_->texts()->end(), static_cast<std::size_t>(reference));
  return {reinterpret_cast<const char*>(columns_->texts()->bytes()->data()) + places.first, places.size()};
}

std::span<const std::int32_t> Catalog::list(std::int32_t reference) const {
  if (reference == kNone) return {};
  const Places places = placesOf(columns_->lists()->end(), static_cast<std::size_t>(reference));
  return {columns_->lists()->number()->data() + places.first, places.size()};
}

std::vector<std::string> Catalog::texts(std::int32_t listReference) const {
  std::vector<std::string> texts;
  for (const std::int32_t reference : list(listReference)) texts.emplace_back(text(reference));
  return texts;
}

ArrayInfo Catalog::array(std::int32_t reference) const {
  const columns::Arrays& arrays = *columns_->arrays();
  const auto i = static_cast<flatbuffers::uoffset_t>(reference);
  return {static_cast<base::NumberFormat>(arrays.format()->Get(i)), static_cast<Packing>(arrays.packing()->Get(i)),
          arrays.slabs()->Get(i), arrays.slabNumbers()->Get(i), arrays.place()->Get(i)};
}

Extent Catalog::slab(const ArrayInfo& array, std::int64_t slab) const {
  if (array.packing == Packing::contiguous) {
    const std::int64_t begin = array.place + slab * array.slabBytes();
    return {begin, begin + array.slabBytes()};
  }
  const auto chunk = static_cast<flatbuffers::uoffset_t>(array.place + slab);
  const std::int64_t begin = columns_->arrays()->chunkOffset()->Get(chunk);
  return {begin, begin + columns_->arrays()->chunkBytes()->Get(chunk)};
}

std::span<const std::uint32_t> Catalog::sums(std::int32_t array) const {
  if (firstSums_.empty()) return {};
  const auto i = static_cast<std::size_t>(array);
  return {columns_->arrays()->sums()->data() + firstSums_[i], firstSums_[i + 1] - firstSums_[i]};
}

std::optional<std::size_t> Catalog::find(const flatbuffers::Vector<std::int32_t>* column, Places places,
                                         std::string_view name) const {
  const std::int32_t* const first = column->data() + places.first;
  const std::int32_t* const end = column->data() + places.end;
  const std::int32_t* const found = std::lower_bound(
      first, end, name, [this](std::int32_t reference, std::string_view wanted) { return text(reference) < wanted; });
  if (found == end || text(*found) != name) return std::nullopt;
  return static_cast<std::size_t>(found - column->data());
}

Places Catalog::placesOf(const flatbuffers::Vector<std::uint32_t>* ends, std::size_t i) {
  const auto at = static_cast<flatbuffers::uoffset_t>(i);
  return {i == 0 ? 0 : ends->Get(at - 1), ends->Get(at)};
}

std::int32_t formInFrame(const Catalog& catalog, std::size_t field, std::int32_t frame) {
  const columns::Fields& fields = *catalog.columns().fields();
  const Places changes = Catalog::placesOf(fields.changeEnd(), field);
  const std::int32_t* const frames = fields.changeFrame()->data();
  const std::int32_t* const found = std::lower_bound(frames + changes.first, frames + changes.end, frame);
  const bool isChanged = found != frames + changes.end && *found == frame;
  return isChanged ? fields.changeForm()->Get(static_cast<flatbuffers::uoffset_t>(found - frames))
                   : fields.form()->Get(static_cast<flatbuffers::uoffset_t>(field));
}

std::int32_t formOfBlock(const Catalog& catalog, std::size_t field, std::int32_t list) {
  if (list == kNone) return formInFrame(catalog, field, 0);
  const std::span<const std::int32_t> frames = catalog.list(list);
  return frames.empty() ? catalog.columns().fields()->form()->Get(static_cast<flatbuffers::uoffset_t>(field))
                        : formInFrame(catalog, field, frames.front());
}

}  // namespace odbstore
