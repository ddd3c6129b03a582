#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>

#include "odbstore/names.h"
#include "odbstore/reader_internal.h"

namespace odbstore {

class StoredLocation::Impl {
 public:
  explicit Impl(h5::Group group) : group_(std::move(group)), info_(readLocationInfo(group_)) {
    nodes_.open(group_, links::kNodeLabels, hasNodeLabels(info_.position));
    elements_.open(group_, links::kElementLabels, hasElementLabels(info_.position));
    points_.open(group_, links::kIntegrationPoints, hasIntegrationPoints(info_.position));
    for (const Labels* labels : {&nodes_, &elements_, &points_}) {
      if (!labels->dataset) continue;
      if (rows_ >= 0 && labels->count() != rows_) group_.fail("the label data sets differ in length");
      rows_ = labels->count();
    }
    if (rows_ > std::numeric_limits<int>::max()) group_.fail("has too many rows");
  }

  struct Labels {
    void open(const h5::Group& group, const char* link, bool wanted) {
      if (!wanted) return;
      dataset = group.dataset(link);
      if (dataset->dims().size() != 1) dataset->fail("labels must have one dimension");
      if (!dataset->isInteger()) dataset->fail("must hold integers");
    }
    std::int64_t count() const { return dataset->count(); }
    const std::vector<int>& read() {
      if (dataset && !values) values = dataset->readInts();
      if (!values) values.emplace();
      return *values;
    }

    std::optional<h5::Dataset> dataset;
    std::optional<std::vector<int>> values;
  };

  h5::Group group_;
  LocationInfo info_;
  std::int64_t rows_ = -1;
  Labels nodes_;
  Labels elements_;
  Labels points_;
};

StoredLocation::StoredLocation(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
StoredLocation::~StoredLocation() = default;

const LocationInfo& StoredLocation::info() const { return impl_->info_; }
std::int64_t StoredLocation::rows() const { return impl_->rows_; }
const std::vector<int>& StoredLocation::nodeLabels() const { return impl_->nodes_.read(); }
const std::vector<int>& StoredLocation::elementLabels() const { return impl_->elements_.read(); }
const std::vector<int>& StoredLocation::integrationPoints() const { return impl_->points_.read(); }

LocationInfo readLocationInfo(const h5::Object& object) {
  const std::string word = object.stringAttribute(attributes::kPosition, "");
  const std::optional<Position> position = positionFromWord(word);
  if (!position) object.fail(fmt::format("the position \"{}\" is not known", word));
  return {object.stringAttribute(attributes::kInstance, ""), *position,
          object.stringAttribute(attributes::kElementType, ""), object.intAttribute(attributes::kSectionPoint, 0),
          object.stringAttribute(attributes::kSectionPointDescription, "")};
}

std::shared_ptr<const StoredLocation> FileAccess::location(const std::string& id, const h5::Object& user) {
  const auto known = locations_.find(id);
  if (known != locations_.end()) return known->second;
  const std::optional<h5::Group> all = root_.findGroup(links::kLocations);
  if (!all || !all->has(linkFromName(id))) user.fail(fmt::format("there is no location \"{}\"", id));
  auto location =
      std::make_shared<const StoredLocation>(std::make_unique<StoredLocation::Impl>(all->group(linkFromName(id))));
  locations_.emplace(id, location);
  return location;
}

class StoredBlock::Impl {
 public:
  Impl(FileAccess& file, const h5::Group& group, const StoredField& field)
      : location_(file.location(group.stringAttribute(attributes::kLocation, ""), group)),
        type_(group.intAttribute(attributes::kType, field.info.type)),
        labels_(group.stringsAttribute(attributes::kComponentLabels)),
        data_(group.dataset(links::kData)) {
    if (labels_.empty()) labels_ = field.info.componentLabels;
    readFrames(group, field);
    checkShape();
  }

  const std::shared_ptr<const StoredLocation>& location() const { return location_; }
  int type() const { return type_; }
  const std::vector<std::string>& labels() const { return labels_; }
  const h5::Dataset& data() const { return data_; }
  std::int64_t width() const { return width_; }
  std::vector<int> frames() const {
    std::vector<int> frames(static_cast<std::size_t>(slabs_));
    for (std::size_t frame = 0; frame < slabOfFrame_.size(); ++frame) {
      if (slabOfFrame_[frame] >= 0) frames[static_cast<std::size_t>(slabOfFrame_[frame])] = static_cast<int>(frame);
    }
    return frames;
  }
  int slabOf(int frame) const { return slabOfFrame_[static_cast<std::size_t>(frame)]; }

  // All rows in a frame of data that can be read directly. Small frames are mostly read one after the other, and a
  // system call for each would take longer than the reading: so a window of several is read at once.
  template <class Number>
  void readWhole(int frame, Number* out) {
    const std::int64_t numbers = location_->rows() * width_;
    const std::int64_t bytes = numbers * static_cast<std::int64_t>(sizeof(Number));
    const std::int64_t slab = slabOf(frame);
    if (bytes == 0) return;
    if (bytes > kWindowBytes / 4) return data_.readDirect(slab * numbers, numbers, out);
    if (slab < windowFirst_ || slab >= windowEnd_) {
      windowFirst_ = windowEnd_ = 0;
      const std::int64_t count = std::min<std::int64_t>(kWindowBytes / bytes, slabs_ - slab);
      window_.resize(static_cast<std::size_t>(count * bytes));
      data_.readDirect(slab * numbers, count * numbers, window_.data());
      windowFirst_ = slab;
      windowEnd_ = slab + count;
    }
    std::memcpy(out, window_.data() + (slab - windowFirst_) * bytes, static_cast<std::size_t>(bytes));
  }

 private:
  static constexpr std::int64_t kWindowBytes = std::int64_t{32} << 10U;

  void readFrames(const h5::Group& group, const StoredField& field) {
    const int frames = static_cast<int>(field.inFrame.size());
    slabOfFrame_.assign(field.inFrame.size(), -1);
    const std::optional<h5::Dataset> list = group.findDataset(links::kFrames);
    if (!list) {
      for (const int frame : field.frames) slabOfFrame_[static_cast<std::size_t>(frame)] = slabs_++;
      return;
    }
    for (const int frame : list->readInts()) {
      if (frame < 0 || frame >= frames) list->fail(fmt::format("frame {} is out of range 0..{}", frame, frames - 1));
      const auto at = static_cast<std::size_t>(frame);
      if (!field.inFrame[at]) list->fail(fmt::format("the field does not exist in frame {}", frame));
      if (slabOfFrame_[at] >= 0) list->fail(fmt::format("frame {} occurs twice", frame));
      slabOfFrame_[at] = slabs_++;
    }
  }

  void checkShape() {
    const h5::Dims& dims = data_.dims();
    if (!data_.isFloat() || (data_.numberSize() != sizeof(float) && data_.numberSize() != sizeof(double))) {
      data_.fail("must hold floats or doubles");
    }
    if (dims.size() != 2 && dims.size() != 3) data_.fail("must have the shape [frames, rows, components]");
    if (dims[0] != static_cast<hsize_t>(slabs_)) {
      data_.fail(fmt::format("holds {} frames, the block has {}", dims[0], slabs_));
    }
    if (dims[1] != static_cast<hsize_t>(location_->rows())) {
      data_.fail(fmt::format("holds {} rows, its location has {}", dims[1], location_->rows()));
    }
    width_ = dims.size() == 3 ? static_cast<std::int64_t>(dims[2]) : 1;
    if (!labels_.empty() && static_cast<std::int64_t>(labels_.size()) != width_) {
      data_.fail(fmt::format("holds {} components, there are {} component labels", width_, labels_.size()));
    }
    if (width_ < 1 || (labels_.empty() && isTensorType(type_) &&
                       width_ > static_cast<std::int64_t>(defaultTensorLabels(type_).size()))) {
      data_.fail(fmt::format("{} components do not fit type {}", width_, type_));
    }
    if (width_ * location_->rows() > std::numeric_limits<int>::max()) data_.fail("a frame is too large");
  }

  std::shared_ptr<const StoredLocation> location_;
  int type_;
  std::vector<std::string> labels_;
  h5::Dataset data_;
  std::vector<int> slabOfFrame_;  // -1: the block does not exist there
  int slabs_ = 0;
  std::int64_t width_ = 0;
  std::vector<char> window_;
  std::int64_t windowFirst_ = 0;  // the slabs in it
  std::int64_t windowEnd_ = 0;
};

StoredBlock::StoredBlock(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
StoredBlock::StoredBlock(StoredBlock&&) noexcept = default;
StoredBlock::~StoredBlock() = default;

const std::shared_ptr<const StoredLocation>& StoredBlock::location() const { return impl_->location(); }
int StoredBlock::type() const { return impl_->type(); }
const std::vector<std::string>& StoredBlock::componentLabels() const { return impl_->labels(); }
bool StoredBlock::isDouble() const { return impl_->data().numberSize() == sizeof(double); }
std::int64_t StoredBlock::rows() const { return impl_->location()->rows(); }
std::int64_t StoredBlock::width() const { return impl_->width(); }
bool StoredBlock::existsIn(int frame) const { return impl_->slabOf(frame) >= 0; }

std::vector<int> StoredBlock::frames() const { return impl_->frames(); }

void StoredBlock::read(int frame, float* out) const {
  if (hasDirectRows() && !isDouble()) return impl_->readWhole(frame, out);
  impl_->data().readSlab(static_cast<hsize_t>(impl_->slabOf(frame)), out);
}

void StoredBlock::read(int frame, double* out) const {
  if (hasDirectRows() && isDouble()) return impl_->readWhole(frame, out);
  impl_->data().readSlab(static_cast<hsize_t>(impl_->slabOf(frame)), out);
}

bool StoredBlock::hasDirectRows() const { return impl_->data().isDirect(); }

void StoredBlock::readRows(int frame, std::int64_t first, std::int64_t count, void* out) const {
  const std::int64_t row = impl_->slabOf(frame) * rows() + first;
  impl_->data().readDirect(row * width(), count * width(), out);
}

FieldInfo readFieldInfo(const h5::Group& group) {
  if (!group.hasAttribute(attributes::kType)) group.fail("has no attribute \"type\"");
  return {group.stringAttribute(attributes::kDescription, ""), group.intAttribute(attributes::kType, 0),
          group.stringsAttribute(attributes::kComponentLabels), group.intsAttribute(attributes::kValidInvariants),
          group.intAttribute(attributes::kEngineeringShear, 0) != 0};
}

namespace {

// Block groups are numbered from 0; their order is that of the numbers, not of the digits.
std::vector<StoredBlock> readBlocks(FileAccess& file, const h5::Group& group, const StoredField& field) {
  std::vector<StoredBlock> blocks;
  const std::optional<h5::Group> all = group.findGroup(links::kBlocks);
  if (!all) return blocks;
  const std::size_t count = all->links().size();
  for (std::size_t k = 0; k < count; ++k) {
    blocks.emplace_back(std::make_unique<StoredBlock::Impl>(file, all->group(std::to_string(k)), field));
  }
  return blocks;
}

StoredField readField(FileAccess& file, const h5::Group& group, const std::string& name, int frames) {
  StoredField field{name, readFieldInfo(group), {}, {}, {}};
  field.inFrame.assign(static_cast<std::size_t>(frames), 0);
  const std::optional<h5::Dataset> list = group.findDataset(links::kFrames);
  if (list) {
    field.frames = list->readInts();
  } else {
    field.frames.resize(static_cast<std::size_t>(frames));
    std::iota(field.frames.begin(), field.frames.end(), 0);
  }
  for (const int frame : field.frames) {
    if (frame < 0 || frame >= frames) list->fail(fmt::format("frame {} is out of range 0..{}", frame, frames - 1));
    char& isThere = field.inFrame[static_cast<std::size_t>(frame)];
    if (isThere != 0) list->fail(fmt::format("frame {} occurs twice", frame));
    isThere = 1;
  }
  field.blocks = readBlocks(file, group, field);
  return field;
}

}  // namespace

std::vector<StoredField> readFields(FileAccess& file, const h5::Group& step, int frames) {
  std::vector<StoredField> fields;
  const std::optional<h5::Group> group = step.findGroup(links::kFields);
  for (const std::string& name : memberNames(group)) {
    fields.push_back(readField(file, group->group(linkFromName(name)), name, frames));
  }
  return fields;
}

}  // namespace odbstore
