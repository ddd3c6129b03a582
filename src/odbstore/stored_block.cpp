#include "odbstore/stored_block.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "odbstore/catalog_paths.h"
#include "odbstore/database_file.h"
#include "odbstore/frame_slabs.h"
#include "odbstore/layout.h"

namespace odbstore {

namespace {

constexpr std::int64_t kWindowBytes = std::int64_t{32} << 10U;

// The list of frames that a block has, its own or its field's.
std::int32_t listOf(const columns::Catalog& columns, std::size_t field, std::size_t block) {
  const std::int32_t own = columns.blocks()->frames()->Get(at(block));
  return own != kNone ? own : columns.fields()->frames()->Get(at(field));
}

}  // namespace

StoredBlock::StoredBlock(std::shared_ptr<const DatabaseFile> file, std::shared_ptr<const StoredLocation> location,
                         std::shared_ptr<const FrameSlabs> slabs, std::size_t step, std::size_t field,
                         std::size_t index)
    : file_(std::move(file)),
      location_(std::move(location)),
      slabs_(std::move(slabs)),
      step_(step),
      field_(field),
      index_(index) {
  const Catalog& catalog = file_->catalog();
  const columns::Blocks& blocks = *catalog.columns().blocks();
  const std::int32_t form = formOfBlock(catalog, field, listOf(catalog.columns(), field, index));
  const columns::Forms& forms = *catalog.columns().forms();
  const auto formAt = static_cast<flatbuffers::uoffset_t>(form);
  type_ = blocks.hasType()->Get(at(index)) != 0 ? blocks.type()->Get(at(index)) : forms.type()->Get(formAt);
  labels_ = catalog.texts(blocks.componentLabels()->Get(at(index)));
  if (labels_.empty()) labels_ = catalog.texts(forms.componentLabels()->Get(formAt));
  data_ = blocks.data()->Get(at(index));
  rows_ = blocks.rows()->Get(at(index));
  width_ = blocks.width()->Get(at(index));
  const ArrayInfo array = catalog.array(data_);
  isDouble_ = base::sizeOf(array.format) == sizeof(double);
  isDirect_ = array.isDirect();
  slabBytes_ = array.slabBytes();
}

std::string StoredBlock::path() const {
  return blockPath(file_->catalog(), step_, field_, index_) + "/" + links::kData;
}

bool StoredBlock::existsIn(int frame) const { return slabs_->slabOf(frame) >= 0; }

std::vector<int> StoredBlock::frames() const { return slabs_->frames(); }

void StoredBlock::readWindow(std::int64_t slab, void* out) const {
  if (slab < windowFirst_ || slab >= windowEnd_) {
    windowFirst_ = windowEnd_ = 0;
    const std::int64_t count = std::min<std::int64_t>(kWindowBytes / slabBytes_, slabs_->count() - slab);
    window_.resize(static_cast<std::size_t>(count * slabBytes_));
    const ArrayInfo array = file_->catalog().array(data_);
    file_->read(array.place + slab * slabBytes_, window_, [this] { return path(); });
    windowFirst_ = slab;
    windowEnd_ = slab + count;
  }
  std::memcpy(out, window_.data() + (slab - windowFirst_) * slabBytes_, static_cast<std::size_t>(slabBytes_));
}

template <class Number>
void StoredBlock::readWhole(int frame, Number* out) const {
  const std::int64_t slab = slabs_->slabOf(frame);
  const std::span numbers(out, static_cast<std::size_t>(rows_ * width_));
  if (numbers.empty()) return;
  const bool isAsAsked = isDouble_ == std::is_same_v<Number, double>;
  if (isDirect_ && isAsAsked && slabBytes_ <= kWindowBytes / 4) return readWindow(slab, out);
  const ArrayInfo array = file_->catalog().array(data_);
  const auto format = isDouble_ ? base::NumberFormat::float64 : base::NumberFormat::float32;
  if (isAsAsked && array.format == format) {
    return file_->readSlab(data_, slab, std::as_writable_bytes(numbers), [this] { return path(); });
  }
  std::vector<std::byte> stored(static_cast<std::size_t>(slabBytes_));
  file_->readSlab(data_, slab, stored, [this] { return path(); });
  if constexpr (std::is_same_v<Number, double>) {
    base::toDoubles(stored, array.format, numbers);
  } else {
    base::toFloats(stored, array.format, numbers);
  }
}

template <class Number>
void StoredBlock::readExpanded(int frame, Number* out) const {
  const std::vector<int>& rowOf = location_->rowOf();
  if (rowOf.empty()) return readWhole(frame, out);
  std::vector<Number> stored(static_cast<std::size_t>(rows_ * width_));
  readWhole(frame, stored.data());
  const auto width = static_cast<std::size_t>(width_);
  for (const int row : rowOf) out = std::copy_n(stored.data() + static_cast<std::size_t>(row) * width, width, out);
}

void StoredBlock::read(int frame, float* out) const { readExpanded(frame, out); }

void StoredBlock::read(int frame, double* out) const { readExpanded(frame, out); }

void StoredBlock::readStored(int frame, float* out) const { readWhole(frame, out); }

void StoredBlock::readStored(int frame, double* out) const { readWhole(frame, out); }

void StoredBlock::readRows(int frame, std::int64_t first, std::int64_t count, void* out) const {
  const std::int64_t rowBytes = width_ * static_cast<std::int64_t>(isDouble_ ? sizeof(double) : sizeof(float));
  const std::int64_t offset = file_->catalog().array(data_).place + slabs_->slabOf(frame) * slabBytes_;
  file_->read(offset + first * rowBytes, {static_cast<std::byte*>(out), static_cast<std::size_t>(count * rowBytes)},
              [this] { return path(); });
}

}  // namespace odbstore
